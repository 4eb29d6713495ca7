// The table of elements, sorted by name.
#include "programs/html/elements.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "programs/common/program.h"
#include "programs/html/tokenizer.h"

namespace klib::programs {
namespace {

using namespace groups;

constexpr Element elements[] = {
    {"address", Element::block, none},     {"area", Element::empty, none},
    {"article", Element::block, none},     {"aside", Element::block, none},
    {"b", Element::inlined, weight},       {"base", Element::empty, none},
    {"basefont", Element::empty, none},    {"bgsound", Element::empty, none},
    {"big", Element::inlined, height},     {"blockquote", Element::block, none},
    {"body", Element::block, none},        {"br", Element::separator, none},
    {"button", Element::block, none},      {"caption", Element::block, none},
    {"center", Element::block, none},      {"cite", Element::inlined, slant},
    {"code", Element::inlined, face},      {"col", Element::separator, none},
    {"colgroup", Element::block, none},    {"dd", Element::block, none},
    {"del", Element::inlined, line},       {"details", Element::block, none},
    {"dfn", Element::inlined, slant},      {"dialog", Element::block, none},
    {"dir", Element::block, none},         {"div", Element::block, none},
    {"dl", Element::block, none},          {"dt", Element::block, none},
    {"em", Element::inlined, slant},       {"embed", Element::empty, none},
    {"fieldset", Element::block, none},    {"figcaption", Element::block, none},
    {"figure", Element::block, none},      {"footer", Element::block, none},
    {"form", Element::block, none},        {"frame", Element::separator, none},
    {"frameset", Element::block, none},    {"h1", Element::block, none},
    {"h2", Element::block, none},          {"h3", Element::block, none},
    {"h4", Element::block, none},          {"h5", Element::block, none},
    {"h6", Element::block, none},          {"head", Element::block, none},
    {"header", Element::block, none},      {"hgroup", Element::block, none},
    {"hr", Element::separator, none},      {"html", Element::block, none},
    {"i", Element::inlined, slant},        {"iframe", Element::raw, none},
    {"image", Element::empty, none},       {"img", Element::empty, none},
    {"input", Element::empty, none},       {"ins", Element::inlined, line},
    {"kbd", Element::inlined, face},       {"keygen", Element::empty, none},
    {"label", Element::block, none},       {"legend", Element::block, none},
    {"li", Element::block, none},          {"link", Element::empty, none},
    {"listing", Element::preserved, none}, {"main", Element::block, none},
    {"math", Element::nested, none},       {"menu", Element::block, none},
    {"meta", Element::empty, none},        {"nav", Element::block, none},
    {"noembed", Element::raw, none},       {"noframes", Element::raw, none},
    {"ol", Element::block, none},          {"optgroup", Element::block, none},
    {"option", Element::block, none},      {"p", Element::block, none},
    {"param", Element::empty, none},       {"plaintext", Element::raw, none},
    {"pre", Element::preserved, none},     {"s", Element::inlined, line},
    {"samp", Element::inlined, face},      {"script", Element::raw, none},
    {"search", Element::block, none},      {"section", Element::block, none},
    {"select", Element::block, none},      {"small", Element::inlined, height},
    {"source", Element::empty, none},      {"strike", Element::inlined, line},
    {"strong", Element::inlined, weight},  {"style", Element::raw, none},
    {"sub", Element::inlined, height},     {"summary", Element::block, none},
    {"sup", Element::inlined, height},     {"svg", Element::nested, none},
    {"table", Element::block, none},       {"tbody", Element::block, none},
    {"td", Element::block, none},          {"template", Element::block, none},
    {"textarea", Element::raw, none},      {"tfoot", Element::block, none},
    {"th", Element::block, none},          {"thead", Element::block, none},
    {"title", Element::caption, none},     {"tr", Element::block, none},
    {"track", Element::empty, none},       {"tt", Element::inlined, face},
    {"u", Element::inlined, line},         {"ul", Element::block, none},
    {"var", Element::inlined, slant},      {"wbr", Element::empty, none},
    {"xmp", Element::raw, none},
};

constexpr bool by_name(const Element &one, const Element &other) { return one.name < other.name; }
static_assert(std::is_sorted(std::begin(elements), std::end(elements), by_name));

// How many names begin with a letter before each of "abc...z{".
constexpr auto names_before = [] {
  std::array<size_t, 27> before{};
  for (size_t i = 0; i < before.size(); i++)
    before[i] = static_cast<size_t>(std::ranges::count_if(
        elements, [&](const Element &one) { return one.name[0] < static_cast<char>('a' + i); }));
  return before;
}();

}  // namespace

Element element(std::string_view name) {
  const char letter = name.empty() ? '\0' : lower_case(name[0]);
  if (letter >= 'a' && letter <= 'z') {
    const size_t place = static_cast<size_t>(letter - 'a');
    for (size_t i = names_before[place]; i < names_before[place + 1]; i++)
      if (equal_names(elements[i].name, name)) return elements[i];
  }
  return {"", Element::inlined, none};
}

}  // namespace klib::programs
