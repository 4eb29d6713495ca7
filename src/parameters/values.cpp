// The two tables of parameter values, their lookups and assignments, and the slot that keeps all
// values while a group of files overrides them.
//
// A parameter is addressed by its combined number, which counts the numeric parameters first, then
// the texts. Five parameters are special: a parameter line assigns them through an operation of
// their own, and fonts are set up and released together with the saved values.

#include <algorithm>
#include <cstring>

#include "frame/memory.h"
#include "frame/messages.h"
#include "frame/resets.h"
#include "klib.h"
#include "parameters/numbers.h"
#include "parameters/parameters.h"

namespace klib::parameters {

namespace {

struct State {
  int32_t *saved_kparm = nullptr;  // the save slot: both null while it is empty
  char **saved_skparm = nullptr;
};
constinit State state;

char *&value_of(Text parameter) { return skparm[static_cast<int32_t>(parameter) - 1]; }

void replace(char *&value, memory::Text text) {
  Kfree(value);
  value = text.release();
}

// Programs may have put a null between the texts.
void release_texts(char **texts) {
  if (texts == nullptr) return;
  for (int32_t i = 0; i < text_count; ++i) Kfree(texts[i]);
  Kfree(texts);
}

// A table with a copy of each text that `text_at` returns.
template <class TextAt>
memory::TextList copy_texts(TextAt text_at) {
  memory::TextList copies = memory::make_text_list(text_count);
  for (int32_t i = 0; i < text_count; ++i)
    copies[static_cast<size_t>(i)] = memory::copy(text_at(i)).release();
  return copies;
}

void check_language() {
  const std::string_view language = text(Text::language);
  const bool is_source_language = number(Number::all_languages) != 0 || language == "NULL" ||
                                  language == "NOLANGUAGE" || language.empty() ||
                                  language == text(Text::source_language);
  kparm[static_cast<int32_t>(Number::is_source_language) - 1] = is_source_language;
}

int32_t set_language(int32_t, char *value) {
  if (skparm == nullptr || std::strcmp(value, text(Text::language)) == 0) return 0;
  replace(value_of(Text::language), memory::copy(value));
  check_language();
  close_message_catalog();
  open_message_catalog();
  return 0;
}

int32_t set_direction(int32_t, char *value) {
  if (skparm == nullptr) return 0;
  const std::string_view direction = value;
  memory::Text whole = memory::copy(direction);
  memory::Text source = memory::copy(start_of_language(direction));
  replace(value_of(Text::direction), std::move(whole));
  replace(value_of(Text::source_language), std::move(source));
  check_language();
  return 0;
}

int32_t set_font_packet(int32_t number, char *value) { return P_set_fontpacket(number, value); }

struct SpecialParameter {
  int32_t number;
  int32_t (*init)();
  void (*cleanup)();
  int32_t (*set)(int32_t number, char *value);
};

// clang-format off
constexpr SpecialParameter special_parameters[] = {
  {combined(Text::font),        P_init_fonts, P_cleanup_fonts, P_set_fonts},
  {combined(Text::fontgroups),  nullptr,      nullptr,         P_set_fontgroups},
  {combined(Text::font_packet), nullptr,      nullptr,         set_font_packet},
  {combined(Text::language),    nullptr,      nullptr,         set_language},
  {combined(Text::direction),   nullptr,      nullptr,         set_direction},
};
// clang-format on

}  // namespace

int32_t number(Number parameter) {
  const int32_t i = static_cast<int32_t>(parameter) - 1;
  return kparm != nullptr ? kparm[i] : numeric_definitions[i].default_value;
}

const char *text(Text parameter) {
  const int32_t i = static_cast<int32_t>(parameter) - 1;
  return skparm != nullptr && skparm[i] != nullptr ? skparm[i] : text_definitions[i].default_value;
}

int32_t parameter_number(const char *name) {
  for (const NumericDefinition &row : numeric_definitions)
    if (std::strcmp(name, row.name) == 0) return row.number;
  for (const TextDefinition &row : text_definitions)
    if (std::strcmp(name, row.name) == 0) return numeric_count + row.number;
  return -1;
}

int32_t parameter_type(int32_t number) {
  if (number >= 1 && number <= numeric_count) return numeric_definitions[number - 1].type;
  if (number > numeric_count && number <= numeric_count + text_count)
    return text_definitions[number - numeric_count - 1].type;
  Kdisplay(MESSAGE_NO_SUCH_PARAMETER, number);
  return 0;
}

const char *parameter_name(int32_t number) {
  return number <= numeric_count ? numeric_definitions[number - 1].name
                                 : text_definitions[number - numeric_count - 1].name;
}

int32_t store_parameter_value(int32_t number, const char *value) {
  if (kparm == nullptr) return 0;
  if (number <= numeric_count)
    kparm[number - 1] = decimal_value(value);
  else
    replace(skparm[number - numeric_count - 1], memory::copy(value));
  return 0;
}

std::string_view start_of_language(std::string_view language) {
  return language.substr(0, language.find('-'));
}

void store_language(std::string_view language) {
  if (skparm != nullptr) replace(value_of(Text::language), memory::copy(language));
}

int32_t set_parameter(int32_t number, char *value) {
  for (const SpecialParameter &row : special_parameters)
    if (row.number == number) return row.set(number, value);
  return store_parameter_value(number, value);
}

void reset() {
  Kdestroy_kparm();
  Kfree(state.saved_kparm);
  release_texts(state.saved_skparm);
  state = State{};
  last_parameter_type = 0;
}

}  // namespace klib::parameters

// Exported names

using namespace klib;
using namespace klib::parameters;

constinit int32_t *kparm = nullptr;
constinit char **skparm = nullptr;
constinit int32_t last_parameter_type = 0;

void Ksourcecode_defaults_for_parms(const char *directory) {
  memory::guarded([&] {
    memory::Buffer lib_directory;
    lib_directory.append(directory);
    lib_directory.append(lib_directory_end);
    auto numbers = memory::allocate_array<int32_t>(numeric_count);
    std::ranges::transform(numeric_definitions, numbers.get(), &NumericDefinition::default_value);
    auto texts = copy_texts([&](int32_t i) {
      return text_definitions[i].number == static_cast<int32_t>(Text::lib_directory)
                 ? lib_directory.text()
                 : text_definitions[i].default_value;
    });
    Kdestroy_kparm();
    kparm = numbers.release();
    skparm = texts.release();
  });
}

void Kinit_parameters() {
  Ksave_parameter_values();
  for (const SpecialParameter &row : special_parameters)
    if (row.init != nullptr) row.init();
}

void Kcleanup_parameters() {
  for (const SpecialParameter &row : special_parameters)
    if (row.cleanup != nullptr) row.cleanup();
  Krestore_parameter_values();
}

void Ksave_parameter_values() {
  memory::guarded([] {
    auto numbers = memory::allocate_array<int32_t>(numeric_count);
    for (int32_t i = 0; i < numeric_count; ++i)
      numbers.get()[i] = number(static_cast<Number>(i + 1));
    auto texts = copy_texts([](int32_t i) { return text(static_cast<Text>(i + 1)); });
    Kfree(state.saved_kparm);
    release_texts(state.saved_skparm);
    state = {numbers.release(), texts.release()};
  });
}

void Krestore_parameter_values() {
  if (state.saved_kparm == nullptr || kparm == nullptr) return;
  std::copy_n(state.saved_kparm, numeric_count, kparm);
  std::swap_ranges(skparm, skparm + text_count, state.saved_skparm);
  Kfree(state.saved_kparm);
  release_texts(state.saved_skparm);
  state = State{};
}

void Kdestroy_kparm() {
  release_texts(skparm);
  Kfree(kparm);
  skparm = nullptr;
  kparm = nullptr;
}
