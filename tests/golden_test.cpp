// The tables of the library, all of them, as one listing that is compared with tests/golden.txt:
// parameters, languages, properties and upper case of every byte, types, messages. After an
// intended change, copy the file that the failing test names to golden.txt.

#include <array>
#include <filesystem>
#include <regex>
#include <sstream>

#include "parameters/parameters.h"
#include "tests/support.h"

namespace klib::test {

namespace {

class Golden : public Library {};

void list_parameters(std::ostream &out) {
  for (int32_t n = 1; n <= parameters::numeric_count; ++n)
    out << n << " \"" << parameters::parameter_name(n) << "\" " << kparm[n - 1] << " type "
        << parameters::parameter_type(n) << '\n';
  for (int32_t n = 1; n <= parameters::text_count; ++n) {
    const int32_t number = parameters::numeric_count + n;
    out << number << " \"" << parameters::parameter_name(number) << "\" \"" << skparm[n - 1]
        << "\" type " << parameters::parameter_type(number) << '\n';
  }
}

void list_languages(std::ostream &out) {
  for (char first = 'A'; first <= 'Z'; ++first)
    for (char second = 'A'; second <= 'Z'; ++second) {
      const char name[] = {first, second, '\0'};
      const std::string long_name = Klang_sh_lo(name);
      if (long_name != "UNKNOWN")
        out << name << ' ' << long_name << ' ' << Klang_lo_sh(long_name.c_str()) << '\n';
    }
}

// A value for each byte, equal ones of neighbours together: "00-08 4000000".
template <class Value>
void list_bytes(std::ostream &out, Value value) {
  const auto hexadecimal = [](uint32_t number) {
    std::ostringstream digits;
    digits << std::uppercase << std::hex << number;
    return digits.str();
  };
  for (int first = 0, last; first < 256; first = last + 1) {
    for (last = first; last < 255 && value(last + 1) == value(first);) ++last;
    out << hexadecimal(static_cast<uint32_t>(first)) << '-'
        << hexadecimal(static_cast<uint32_t>(last)) << ' ' << hexadecimal(value(first)) << '\n';
  }
}

// How far each byte's upper case is from it, by uppercase_string on bytes that all count as lower.
void list_upper_case(std::ostream &out, const char *language) {
  static constexpr std::array<uint32_t, 256> all_lower = [] {
    std::array<uint32_t, 256> types{};
    types.fill(0x40000000);
    return types;
  }();
  initUpcase(language);
  const uint32_t *const types = c_t;
  c_t = all_lower.data();
  out << "upper case " << language << '\n';
  list_bytes(out, [](int byte) {
    char text[] = {static_cast<char>(byte), '\0'};
    uppercase_string(text);
    return static_cast<uint32_t>(byte - static_cast<unsigned char>(text[0])) & 0xFF;
  });
  c_t = types;
}

void list_types(std::ostream &out) {
  char **expressions = Kcharacter_types_regex();
  for (int i = 0; *ct_names[i] != '\0'; ++i)
    out << ct_names[i] << ' ' << std::hex << ct_props[i] << std::dec << ' ' << take(expressions[i])
        << '\n';
  Kfree(expressions);
}

// Read from the header itself, so that a new message cannot be missing from the list.
void list_messages(std::ostream &out) {
  const std::regex definition(R"re(#define MESSAGE_\w+ +(?:(\d+), +(\d+), )? *"(.*)")re");
  std::istringstream header(read_file(MESSAGES));
  std::smatch parts;
  for (std::string line; std::getline(header, line);) {
    if (!line.starts_with("#define MESSAGE_")) continue;
    ASSERT_TRUE(std::regex_match(line, parts, definition)) << line;
    out << (parts[1].matched ? parts[1].str() + ',' + parts[2].str() : "not catalogued:") << ' '
        << std::regex_replace(parts[3].str(), std::regex(R"(\\n)"), "{0A}") << '\n';
  }
}

TEST_F(Golden, Tables) {
  std::ostringstream out;
  list_parameters(out);
  list_languages(out);
  for (const char *language : {"GERMAN", "RUSSIAN", "GREEK"}) {
    initCT(language);
    out << "properties " << language << '\n';
    list_bytes(out, [](int byte) { return cprops(byte); });
    list_types(out);
    list_upper_case(out, language);
  }
  out << "upper case by upcaseRu and upcaseGr\n";
  list_bytes(out, [](int byte) { return static_cast<uint32_t>(byte - upcaseRu(byte)) & 0xFF; });
  list_bytes(out, [](int byte) { return static_cast<uint32_t>(byte - upcaseGr(byte)) & 0xFF; });
  list_messages(out);
  const std::string written = std::filesystem::temp_directory_path() / "golden.txt";
  EXPECT_EQ(out.str(), read_file(GOLDEN)) << "compare " << written;
  if (HasFailure()) write_file(written, out.str());
}

}  // namespace

}  // namespace klib::test
