// Sentence output with any width and number, counters with any values, and the way back: a sentence
// without frame bytes, leading white space and runs of blanks is read back as it was written.

#include "fuzz/frame.h"
#include "klib.h"
#include "parameters/parameters.h"

using namespace klib::fuzz;

namespace {

void run_counters(Input &input) {
  for (int i = 0; i < 6; ++i) {
    const int32_t counter =
        input.below(4) == 0 ? input.number() : static_cast<int32_t>(input.below(16));
    const int32_t start = input.number();
    init_counter(counter, start, input.number());
    for (uint32_t n = input.below(5); n > 0; --n) count(counter, input.number());
  }
}

int32_t &value_of(klib::parameters::Number parameter) {
  return kparm[klib::parameters::combined(parameter) - 1];
}

bool comes_back_unchanged(const std::string &sentence) {
  if (sentence.empty() || (cprops(static_cast<uint8_t>(sentence[0])) & 0x08000000) != 0)
    return false;
  if (sentence.find_first_of("\x90\x91\t\r\n") != std::string::npos) return false;
  return sentence.find("  ") == std::string::npos;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  Input input(data, size);
  fresh_library();
  run_counters(input);
  using klib::parameters::Number;
  value_of(Number::kti_width) =
      input.below(3) == 0 ? input.number() : static_cast<int32_t>(input.byte());
  value_of(Number::kti_start) = input.below(3) == 0 ? input.number() : 0;
  value_of(Number::kti_step) = input.below(3) == 0 ? input.number() : 1;
  const int32_t start = value_of(Number::kti_start);

  scratch_file("out.kti", "");
  FILE *stream = Kfopen("out.kti", "w");
  init_kti_format(1);
  std::vector<std::string> sentences;
  std::vector<int32_t> numbers;
  while (!input.empty() && sentences.size() < 20) {
    std::string sentence = input.text();
    const std::string original = sentence;
    numbers.push_back(count(0, -1));
    kti_format(stream, sentence.data(), 1);
    sentence.resize(std::string(sentence.c_str()).size());
    require(sentence.size() <= original.size(), "a sentence never grows");
    sentences.push_back(original);
  }
  exit_kti_format();
  Kfclose(stream, 0);

  bool all_come_back = true;
  for (const std::string &sentence : sentences)
    all_come_back = all_come_back && comes_back_unchanged(sentence);
  stream = Kfopen("out.kti", "r");
  init_parser(P_SENTENCE);
  size_t next = 0;
  for (int32_t kind; (kind = parse(stream)) != P_END;) {
    if (kind != P_SENTENCE) continue;
    std::string text = kti_body(p_root[parser_level].token);
    for (char &c : text)
      if (c == '\n') c = ' ';
    if (all_come_back && start >= 0) {
      require(next < sentences.size() && text == sentences[next], "a sentence comes back");
      require(numbers[next] < 0 || current_sentence_number == numbers[next], "so does its number");
    }
    ++next;
  }
  exit_parser();
  Kfclose(stream, 0);
  return 0;
}
