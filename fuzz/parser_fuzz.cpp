// The parser: any flags and operations on any text, as a string and as a stream.
//
// Every byte of a string comes back in the tokens, in order, and a stream has the same tokens as a
// string of its bytes.

#include <cstdio>

#include "fuzz/frame.h"
#include "klib.h"

using namespace klib::fuzz;

namespace {

struct Tokens {
  std::string kinds, texts;
};

Tokens read_all(FILE *stream, const std::string &text, int32_t flags) {
  Tokens tokens;
  init_parser(flags);
  if (stream == nullptr) parse_from_string(text.c_str());
  for (int32_t kind; (kind = parse(stream)) != P_END;) {
    tokens.kinds += std::to_string(kind) + " ";
    tokens.texts += p_root[parser_level].token;
  }
  exit_parser();
  return tokens;
}

// Operations in any order, also ones that make no sense.
void run_operations(Input input, FILE *stream, const std::string &text) {
  init_parser(input.number() & 0x47FF);
  if (stream == nullptr) parse_from_string(text.c_str());
  for (int i = 0; i < 40 && !input.empty(); ++i) {
    switch (input.below(10)) {
      case 0:
        init_parser(input.number());
        break;
      case 1:
        exit_parser();
        break;
      case 2:
        if (parser_level > 0) parse_from_string(text.c_str());
        break;
      case 3: {
        const uint8_t line = input.byte();
        parse_to(stream, line, input.byte());
        break;
      }
      case 4:
        p_getchar(stream);
        break;
      case 5:
        initCT(input.below(2) != 0 ? "RU" : "GR");
        break;
      case 6:
        real_string_length(text.c_str());
        break;
      default:
        parse(stream);
    }
  }
  while (parser_level > 0) exit_parser();
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  Input input(data, size);
  const int32_t flags = input.number();
  const Input operations = input;
  const std::string all = input.rest();
  const std::string text = all.c_str();  // up to the first NUL
  fresh_library();

  const Tokens from_string = read_all(nullptr, text, flags);
  require(from_string.texts == text, "every byte of a string comes back in the tokens");
  if (!text.empty()) {
    FILE *stream = fmemopen(const_cast<char *>(text.data()), text.size(), "r");
    const Tokens from_stream = read_all(stream, text, flags);
    std::fclose(stream);
    require(from_stream.texts == text && from_stream.kinds == from_string.kinds,
            "a stream has the tokens of the string");
  }
  const std::string body_text = from_string.texts + " ";
  require(real_string_length(body_text.c_str()) >= INT32_MIN, "a display width exists");

  run_operations(operations, nullptr, text);
  if (!all.empty()) {
    FILE *stream = fmemopen(const_cast<char *>(all.data()), all.size(), "r");
    run_operations(operations, stream, text);
    std::fclose(stream);
  }
  return 0;
}
