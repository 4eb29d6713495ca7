// A stack of open elements. Fonts are written late: a font that is selected opens before the next
// character that has it, and one that is no longer selected closes after the last one, before white
// space. Elements that must be closed before their time, because one around them ends, wait
// until the next character and then open again; so one that ends there anyway is not opened twice.
#include "programs/document/nesting.h"

#include <algorithm>

namespace klib::programs {
namespace {

constexpr int32_t no_limit = INT32_MAX;

bool begins_markup(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '/' || c == '!' || c == '?';
}

}  // namespace

void NestedWriter::put_around(const std::vector<Element> &elements) {
  for (const Element &element : elements) {
    given_up_.insert(element.number);
    result_ += element.opening;
    stack_.push_back(element);
    stack_.back().group = -1;
  }
}

void NestedWriter::select(int group, const Element &font) {
  wanted_[group] = given_up_.contains(font.number) ? Element{0, {}, {}} : font;
  wanted_[group].group = group;
  if (interrupted_[group] != font.number) interrupted_[group] = 0;
  fonts_changed_ = true;
}

void NestedWriter::write_blank() {
  if (blank_is_due_) result_ += ' ';
  blank_is_due_ = false;
}

// Whether an element that was open before may be opened again; otherwise it is given up.
bool NestedWriter::can_afford(const Element &element) {
  const size_t cost = element.opening.size() + element.closing.size() + 1;
  if (cost <= budget_) {
    budget_ -= cost;
    return true;
  }
  too_costly_.push_back(element);
  given_up_.insert(element.number);
  if (element.group >= 0) wanted_[element.group] = Element{0, {}, {}};
  return false;
}

void NestedWriter::push(const Element &element) {
  result_ += element.opening;
  if (element.group >= 0) {
    is_open_[element.group] = true;
    font_depth_[element.group] = stack_.size();
  } else {
    depth_[element.number] = stack_.size();
  }
  stack_.push_back(element);
}

// Closes the elements above `depth`. Those that are still wanted will open again.
void NestedWriter::pop_to(size_t depth) {
  while (stack_.size() > depth) {
    Element &top = stack_.back();
    result_ += top.closing;
    if (top.group >= 0) {
      is_open_[top.group] = false;
      if (wanted_[top.group].number == top.number) interrupted_[top.group] = top.number;
      fonts_changed_ = true;
    } else {
      depth_.erase(top.number);
      suspended_.emplace(top.number, std::move(top));
    }
    stack_.pop_back();
  }
}

void NestedWriter::close_unwanted_fonts() {
  size_t depth = stack_.size();
  for (int group = 0; group < font_group_count; group++)
    if (is_open_[group] && stack_[font_depth_[group]].number != wanted_[group].number)
      depth = std::min(depth, font_depth_[group]);
  pop_to(depth);
}

// Opens, from the outside to the inside, what is wanted and has a number below `limit`; only what
// was closed before its time if `again`.
void NestedWriter::open_wanted(int32_t limit, bool again) {
  std::vector<Element> elements;
  fonts_changed_ = false;
  for (int group = 0; group < font_group_count; group++) {
    const Element &font = wanted_[group];
    if (font.number == 0 || is_open_[group]) continue;
    const bool was_open = interrupted_[group] == font.number;
    if (font.number >= limit || (again && !was_open)) {
      fonts_changed_ = true;  // later
      continue;
    }
    interrupted_[group] = 0;
    if (!fonts_opened_.insert(font.number).second && !can_afford(font)) continue;
    elements.push_back(font);
    if (was_open) reopened_.push_back(font.number);
  }
  while (!suspended_.empty() && suspended_.begin()->first < limit) {
    const Element element = std::move(suspended_.begin()->second);
    suspended_.erase(suspended_.begin());
    if (!can_afford(element)) continue;
    reopened_.push_back(element.number);
    elements.push_back(element);
  }
  std::sort(elements.begin(), elements.end(),
            [](const Element &one, const Element &other) { return one.number < other.number; });
  for (const Element &element : elements) push(element);
}

// Brings the open elements to what the next thing needs; an anchor needs only what was opened
// before it in the page. What opens again has the blank inside, what opens for the first time has
// it outside.
void NestedWriter::settle(int32_t limit) {
  if (fonts_changed_) close_unwanted_fonts();
  const bool something_opens = fonts_changed_ || !suspended_.empty();
  if (something_opens && blank_is_due_) open_wanted(limit, true);
  write_blank();
  if (something_opens) open_wanted(limit, false);
}

void NestedWriter::text(std::string_view html) {
  settle(no_limit);
  if (behind_bare_ == result_.size() && begins_markup(html[0])) {
    result_.pop_back();
    result_ += "&lt;";
  }
  result_ += html;
}

void NestedWriter::bare_less_than() {
  text("<");
  behind_bare_ = result_.size();
}

void NestedWriter::single(int32_t number, std::string_view raw) {
  settle(number);
  result_ += raw;
}

void NestedWriter::open(const Element &element) {
  if (given_up_.contains(element.number)) return;
  settle(element.number);
  push(element);
}

void NestedWriter::close(int32_t number) {
  if (fonts_changed_) close_unwanted_fonts();
  write_blank();
  const auto open = depth_.find(number);
  if (open != depth_.end()) pop_to(open->second);
  suspended_.erase(number);
}

void NestedWriter::close_from_before(std::string_view raw) {
  if (fonts_changed_) close_unwanted_fonts();
  write_blank();
  pop_to(0);
  result_ += raw;
}

void NestedWriter::end() {
  for (int group = 0; group < font_group_count; group++) select(group, Element{0, {}, {}});
  close_unwanted_fonts();
  write_blank();
  size_t depth = 0;
  while (depth < stack_.size() && stack_[depth].outlives) depth++;
  pop_to(depth);
  for (auto &[number, element] : suspended_) {
    if (!element.outlives) continue;
    reopened_.push_back(number);
    result_ += element.opening;
  }
}

}  // namespace klib::programs
