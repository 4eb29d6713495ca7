// Any bytes as the files of kshow, kcarry and kmerge: they do no harm, and what is not complete is
// not left under its final name.

#include <algorithm>

#include "fuzz/page_jobs.h"

using namespace klib::fuzz;
using namespace klib::programs;

namespace {

// The positions after the lines, in the form of an anchor index.
std::string index_of_lines(const std::string &text) {
  std::string index;
  for (size_t i = 0; i < text.size(); i++) {
    if (text[i] != '\n' && i + 1 < text.size()) continue;
    for (size_t position = i + 1, k = 0; k < 4; k++, position >>= 8)
      index += static_cast<char>(position);
  }
  return index;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  Input input(data, size);
  const std::string language = any_language(input), target = any_language(input);
  const uint32_t flags = input.byte();
  const bool own_index = (flags & 1) != 0, with_nuls = (flags & 2) != 0,
             in_order = (flags & 4) != 0, with_headers = (flags & 8) == 0;
  clear_scratch();
  const std::string begin = " 2 0000000000000000 " + language;
  for (const std::string name : {"job.kti", "job.tra", "job.ali", "job.anc"}) {
    std::string content = input.text();
    if (with_nuls) std::replace(content.begin(), content.end(), '~', '\0');
    if (with_headers && name == "job.kti") content = "klib-sentences" + begin + "\n" + content;
    if (with_headers && name == "job.anc")
      content = "klib-page" + begin + " html UTF-8\n" + content;
    scratch_file(name.c_str(), content);
  }
  scratch_file("job.anx", own_index ? input.rest() : index_of_lines(read_scratch("job.anc")));

  run(kshow, {"-LANGUAGE", language, "job.kti"});
  const Outcome carried =
      run(kcarry, {"-LANGUAGE", language, "-TARGET-LANGUAGE", target, "job.kti", "job.tra",
                   in_order ? "--align=identity" : "job.ali", "out.kti"});
  const bool complete = carried.messages.find(" carried: ") != std::string::npos;
  require(has_scratch("out.kti") == complete, "an output is there if it is complete");
  require(complete || !carried.good, "an output that is missing is reported");
  for (const std::string job : {"job", "out"}) {
    if (!has_scratch(job + ".kti")) continue;
    const Outcome merged = run(kmerge, {"-LANGUAGE", job == "job" ? language : target, job + ".kti",
                                        "job.anc", job + ".htm"});
    require(!merged.good || has_scratch(job + ".htm"), "a job that went well has a result");
  }
  if (complete) run(kshow, {"-LANGUAGE", target, "out.kti"});
  for (const std::string &name : words_of(scratch_files()))
    require(name.size() == 7, "no temporary file is left");
  return 0;
}
