// A page of any bytes through kextract and, without a translation, through kmerge: it comes back as
// it was, or is refused.

#include "fuzz/page_jobs.h"
#include "programs/common/utf8.h"
#include "programs/html/page_file.h"
#include "programs/html/tokenizer.h"
#include "tests/programs/same_pages.h"

using namespace klib;
using namespace klib::fuzz;

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  Input input(data, size);
  const std::string language = any_language(input), width = std::to_string(input.byte());
  const std::string bytes = input.rest();
  clear_scratch();
  scratch_file("page.html", bytes);

  const bool may_be_refused = bytes.find('\0') != bytes.npos ||
                              programs::find_invalid_utf8(bytes) != bytes.npos ||
                              programs::lower_case(bytes).find("charset") != bytes.npos;
  if (!run(programs::kextract, {"-LANGUAGE", language, "-KTI-WIDTH", width, "job.kti", "page.html"})
           .good) {
    require(may_be_refused, "a page that declares nothing and is UTF-8 is taken");
    require(scratch_files() == "page.html ", "a page that is refused leaves no file");
    return 0;
  }
  const Outcome merged =
      run(programs::kmerge, {"-LANGUAGE", language, "job.kti", "job.anc", "result.html"});
  require(merged.good && merged.messages.empty(), "what was extracted is merged without a remark");
  require(scratch_files() == "job.anc job.anx job.kti job.txt page.html result.html ",
          "nothing but the results is left");

  const programs::Document page = programs::read_page("page.html", "");
  // Read as the page was: converters differ in single bytes, such as the backslash of Shift_JIS.
  const programs::Document result = programs::read_page("result.html", "");
  test::Place expected{page.text}, place{result.text};
  require(test::same_pages(expected, place), "the page comes back");
  return 0;
}
