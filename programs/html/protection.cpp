// Elements end as in the standard, as far as that matters for the end of a protected one: at their
// end tag, at the end tag of a block around them, and, where their end tag may be left out, at
// whatever ends them then.
#include "programs/html/protection.h"

#include <algorithm>

#include "programs/common/languages.h"
#include "programs/html/elements.h"

namespace klib::programs {
namespace {

constexpr size_t looked_at = 256;  // open elements among which one without an end tag is looked for

// Elements that end where another begins, unless one of the last column is around that one.
struct ImpliedEnd {
  std::string_view starts, ended, inside;
};

constexpr ImpliedEnd implied_ends[] = {
    {" li ", " li ", " ul ol menu "},
    {" dt dd ", " dt dd ", " dl "},
    {" td th ", " td th ", " tr table "},
    {" tr ", " tr ", " tbody thead tfoot table "},
    {" tbody thead tfoot ", " tbody thead tfoot ", " table "},
    {" option ", " option ", " optgroup select datalist "},
    {" optgroup ", " option optgroup ", " select "},
};

bool is_among(std::string_view names, const std::string &name) {
  return names.find(' ' + name + ' ') != names.npos;
}

bool is_code(std::string_view name) {
  return equal_names(name, "code") || equal_names(name, "kbd") || equal_names(name, "samp") ||
         equal_names(name, "tt");
}

// What ends an open paragraph.
bool ends_paragraph(std::string_view name) {
  const Element::Content content = element(name).content;
  return content == Element::preserved || equal_names(name, "hr") ||
         (content == Element::block && !equal_names(name, "button") &&
          !equal_names(name, "label") && !equal_names(name, "select") &&
          !equal_names(name, "option"));
}

bool has_class(std::string_view classes, std::string_view wanted) {
  for (size_t i = 0; i < classes.size();) {
    const size_t begin = i;
    while (i < classes.size() && !is_html_white(classes[i])) i++;
    if (equal_names(classes.substr(begin, i - begin), wanted)) return true;
    while (i < classes.size() && is_html_white(classes[i])) i++;
  }
  return false;
}

// The code of a language tag's first part; empty when it names none.
std::string code_of(std::string_view tag) {
  const std::string primary = lower_case(tag.substr(0, tag.find_first_of("-_")));
  if (primary == "und" || primary == "mul") return "";
  const std::string name = language_name(primary);
  return name.empty() ? primary : language_code(name);
}

}  // namespace

bool Protection::is_own_language(std::string_view value) const {
  return std::ranges::find(languages_, code_of(value)) != languages_.end();
}

Protection::State Protection::state_inside(std::string_view name,
                                           const std::vector<Attribute> &attributes) const {
  State state = open_.empty() ? State{} : open_.back().state;
  if (is_code(name) && !code_is_text_) state.off = true;
  for (const Attribute &read : attributes) {
    if (equal_names(read.name, "lang") || equal_names(read.name, "xml:lang"))
      state.foreign = !code_of(read.value).empty() && !is_own_language(read.value);
    else if (equal_names(read.name, "class") && has_class(read.value, "notranslate"))
      state.off = true;
  }
  if (const Attribute *const translate = find_attribute(attributes, "translate")) {
    if (equal_names(translate->value, "no"))
      state.off = true;
    else if (translate->value.empty() || equal_names(translate->value, "yes"))
      state = State{};
  }
  return state;
}

bool Protection::protects(std::string_view name, const std::vector<Attribute> &attributes) const {
  return state_inside(name, attributes).is_on();
}

// Ends what the start of an element ends without an end tag.
void Protection::end_by_start(std::string_view name) {
  const std::string starts = lower_case(name);
  const size_t stop = open_.size() - std::min(open_.size(), looked_at);
  const auto end = [&](std::string_view ended, std::string_view inside) {
    for (size_t i = open_.size(); i-- > stop;) {
      const std::string open = lower_case(open_[i].name);
      if (is_among(inside, open)) return;
      if (!is_among(ended, open)) continue;
      open_.resize(i);
      return;
    }
  };
  for (const ImpliedEnd &row : implied_ends)
    if (is_among(row.starts, starts)) end(row.ended, row.inside);
  if (ends_paragraph(name)) end(" p ", " button caption td th table object template ");
}

void Protection::start(std::string_view name, const std::vector<Attribute> &attributes) {
  const bool is_root = equal_names(name, "html");
  if (!page_is_known_ && (is_root || equal_names(name, "body"))) {
    const Attribute *language = find_attribute(attributes, "lang");
    if (!language) language = find_attribute(attributes, "xml:lang");
    if (language) languages_.push_back(code_of(language->value));
    page_is_known_ = language != nullptr;
  }
  if (!open_.empty()) end_by_start(name);
  const State state = state_inside(name, attributes);
  if (!open_.empty() || state.is_on()) open_.push_back({name, state});
}

void Protection::end(std::string_view name) {
  if (open_.empty()) return;
  const bool is_inline = element(name).content == Element::inlined;
  const size_t stop = is_inline ? open_.size() - std::min(open_.size(), looked_at) : 0;
  for (size_t i = open_.size(); i-- > stop;) {
    if (!equal_names(open_[i].name, name)) continue;
    if (is_inline)
      open_.erase(open_.begin() + static_cast<std::ptrdiff_t>(i));
    else
      open_.resize(i);
    return;
  }
  if (!is_inline) open_.clear();  // it ends a block around them all
}

}  // namespace klib::programs
