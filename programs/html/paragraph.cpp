// Paragraphs of a page. Tags are paired within their paragraph with a stack: an end tag closes the
// innermost open element of its name, and the elements inside that one that are still open have no
// partner. A count for each name keeps stray end tags from being looked for, so every tag is
// pushed and popped once.
#include "programs/html/paragraph.h"

#include <algorithm>
#include <string>
#include <unordered_map>

#include "programs/html/attributes.h"
#include "programs/html/boundaries.h"
#include "programs/html/elements.h"
#include "programs/html/text_reader.h"
#include "programs/html/tokenizer.h"

namespace klib::programs {
namespace {

// The position after the raw text of a start tag and its end tag.
size_t end_of_raw_element(std::string_view page, const Token &start) {
  const size_t end = end_of_raw_text(page, start.end, start.name);
  return end == page.size() ? end : next_token(page, end).end;
}

bool closes_itself(std::string_view page, const Token &tag) { return page[tag.end - 2] == '/'; }

// The position after the end tag that belongs to a start tag, with all that is nested in it.
size_t end_of_nested_element(std::string_view page, const Token &start, bool is_html) {
  if (!is_html && closes_itself(page, start)) return start.end;
  size_t depth = 1, i = start.end;
  while (i < page.size() && depth > 0) {
    const Token token = next_token(page, i);
    i = token.end;
    if (token.kind == Token::start_tag && is_html) {
      const Element::Content content = element(token.name).content;
      if (content == Element::raw || content == Element::caption)
        i = end_of_raw_element(page, token);
    }
    if (token.name.empty() || !equal_names(token.name, start.name)) continue;
    if (token.kind == Token::end_tag)
      depth--;
    else if (is_html || !closes_itself(page, token))
      depth++;
  }
  return i;
}

using OpenCounts = std::unordered_map<std::string, size_t>;

// The font group of an element whose end tag is what would be made of its name.
int font_group_of(std::string_view page, const Item &open, const Item &close) {
  const std::string_view end_tag = page.substr(close.begin, close.end - close.begin);
  const bool is_usual = end_tag.size() == open.name.size() + 3 && end_tag.starts_with("</") &&
                        end_tag.ends_with('>') && end_tag.substr(2, open.name.size()) == open.name;
  return is_usual ? element(open.name).font_group : -1;
}

void pair_tags(std::string_view page, std::vector<Item> &items) {
  std::vector<size_t> open;
  OpenCounts open_by_name;
  for (size_t i = 0; i < items.size(); i++) {
    Item &item = items[i];
    if (item.kind == Item::open) {
      open.push_back(i);
      open_by_name[lower_case(item.name)]++;
    }
    if (item.kind != Item::close) continue;
    size_t &count = open_by_name[lower_case(item.name)];
    if (count == 0) {
      item.reaches_out = open.empty();
      continue;
    }
    while (!equal_names(items[open.back()].name, item.name)) {
      open_by_name[lower_case(items[open.back()].name)]--;
      open.pop_back();
    }
    count--;
    item.partner = open.back();
    items[open.back()].partner = i;
    items[open.back()].font_group = font_group_of(page, items[open.back()], item);
    open.pop_back();
  }
  for (const size_t i : open) items[i].reaches_out = true;
}

// Finds out what can be seen of an item of text.
void look_into(std::string_view page, Item &item) {
  item.visible = item.lettered = false;
  TextReader reader(page.substr(item.begin, item.end - item.begin));
  while (!item.lettered && !reader.at_end()) {
    if (const std::string_view plain = reader.take_plain(); !plain.empty()) {
      item.visible = true;
      item.lettered = std::ranges::any_of(
          plain, [](char c) { return is_letter_or_digit(static_cast<unsigned char>(c)); });
      continue;
    }
    const char32_t c = reader.next().character;
    item.lettered = is_letter_or_digit(c);
    item.visible = item.visible || !is_invisible(c);
  }
}

}  // namespace

Item part_of(std::string_view page, const Item &item, size_t begin, size_t end) {
  Item part = item;
  part.begin = begin;
  part.end = end;
  if (item.kind == Item::text) look_into(page, part);
  return part;
}

// What a template fills in, "{{ }}", is an atom where atoms are taken.
void ParagraphReader::take_text(size_t begin, size_t end, std::vector<Item> &items) {
  const std::string_view text = page_.substr(0, end);
  while (takes_atoms_) {
    const size_t from = text.find("{{", begin);
    const size_t to = from == text.npos ? text.npos : text.find("}}", from + 2);
    if (to == text.npos) break;
    take_runs(begin, from, items);
    Item item{Item::single, from, to + 2, {}};
    item.kept = protection_.is_on();
    item.atom = !item.kept;
    items.push_back(item);
    begin = to + 2;
  }
  take_runs(begin, end, items);
}

void ParagraphReader::take_runs(size_t begin, size_t end, std::vector<Item> &items) {
  for (size_t i = begin; i < end;) {
    const size_t first = i;
    const bool white = is_html_white(page_[i]);
    while (i < end && is_html_white(page_[i]) == white) i++;
    Item &item = items.emplace_back(Item{white ? Item::white : Item::text, first, i, {}});
    item.kept = protection_.is_on();
    if (!white) look_into(page_, item);
  }
}

bool is_picture(std::string_view name) {
  constexpr std::string_view names[] = {"img", "image", "input", "embed", "iframe"};
  return std::ranges::any_of(names, [&](std::string_view one) { return equal_names(one, name); });
}

bool ParagraphReader::is_offered(std::string_view name) const {
  for (std::string_view left = offer_; !left.empty();) {
    const std::string_view offered = left.substr(0, left.find(','));
    if (equal_names(offered, name)) return true;
    left.remove_prefix(std::min(offered.size() + 1, left.size()));
  }
  return false;
}

// Takes text up to white space that is no single blank, which ends the paragraph; true when there
// is none before `end`.
bool ParagraphReader::take_verbatim(size_t end, std::vector<Item> &items) {
  for (size_t i = position_; i < end;) {
    const size_t begin = i;
    while (i < end && is_html_white(page_[i])) i++;
    if (i > begin && page_.substr(begin, i - begin) != " ") {
      take_text(position_, begin, items);
      position_ = i;
      return false;
    }
    while (i < end && !is_html_white(page_[i])) i++;
  }
  take_text(position_, end, items);
  position_ = end;
  return true;
}

// Takes the slots of a start tag, and of those before the position, in an element kept whole.
void ParagraphReader::take_slots(const Token &start) {
  find_slots(page_, start, attributes_, protection_, slots_);
  for (size_t i = start.end; i < position_;) {
    const Token token = next_token(page_, i);
    i = token.end;
    if (token.kind != Token::start_tag) continue;
    read_attributes(page_.substr(token.begin, token.end - token.begin), attributes_);
    find_slots(page_, token, attributes_, protection_, slots_);
  }
}

// Takes the token at the position; false when the paragraph ends there.
bool ParagraphReader::take_token(std::vector<Item> &items) {
  const Token token = next_token(page_, position_);
  if (token.kind == Token::text && token.begin < verbatim_end_)
    return take_verbatim(token.end, items);
  position_ = token.end;
  if (token.kind == Token::text) {
    take_text(token.begin, token.end, items);
    return true;
  }
  if (token.kind == Token::other) {
    Item item{Item::single, token.begin, token.end, {}};
    item.kept = protection_.is_on();
    item.atom = page_.substr(token.begin).starts_with("<?");
    items.push_back(item);
    return true;
  }
  const bool opens = token.kind == Token::start_tag;
  if (opens) read_attributes(page_.substr(token.begin, token.end - token.begin), attributes_);
  Element::Content content = element(token.name).content;
  if (token.begin < drawing_end_ && content != Element::raw)
    content = equal_names(token.name, "tspan") || equal_names(token.name, "a") ||
                      equal_names(token.name, "textpath")
                  ? Element::inlined
                  : Element::block;
  if (opens && is_offered(token.name)) {
    if (content == Element::raw) {
      verbatim_end_ = end_of_raw_text(page_, token.end, token.name);
      content = Element::caption;
    } else if (content == Element::preserved) {
      verbatim_end_ = end_of_nested_element(page_, token, true);
      content = Element::block;
    } else if (content == Element::nested) {
      drawing_end_ = end_of_nested_element(page_, token, false);
      content = Element::block;
    }
  }
  Item::Kind kind = Item::single;
  bool kept = protection_.is_on();
  if (opens && content == Element::preserved) position_ = end_of_nested_element(page_, token, true);
  if (content == Element::inlined || content == Element::block || content == Element::caption) {
    if (opens)
      protection_.start(token.name, attributes_);
    else
      protection_.end(token.name);
    if (opens) kept = protection_.is_on();
  }
  if (opens) take_slots(token);
  switch (content) {
    case Element::block:
    case Element::separator:
    case Element::preserved:
      return false;
    case Element::caption:
      if (opens) caption_end_ = end_of_raw_text(page_, token.end, token.name);
      return false;
    case Element::raw:
      if (opens) position_ = end_of_raw_element(page_, token);
      break;
    case Element::nested:
      if (opens) position_ = end_of_nested_element(page_, token, false);
      break;
    case Element::empty:
      break;
    case Element::inlined:
      kind = opens ? Item::open : Item::close;
      break;
  }
  Item item{kind, token.begin, position_, kind == Item::single ? "" : token.name};
  item.kept = kept;
  item.atom = opens && (content == Element::nested || is_picture(token.name));
  items.push_back(item);
  return true;
}

bool ParagraphReader::next(std::vector<Item> &items) {
  items.clear();
  if (position_ == page_.size()) return false;
  if (position_ < caption_end_) {
    // Tags have no meaning here but would have one elsewhere: such a text is left alone.
    const std::string_view caption = page_.substr(position_, caption_end_ - position_);
    if (caption.find('<') != std::string_view::npos)
      position_ = caption_end_;
    else if (position_ < verbatim_end_)
      take_verbatim(caption_end_, items);
    else
      take_text(position_, caption_end_, items), position_ = caption_end_;
    return true;
  }
  while (position_ < page_.size() && take_token(items)) {
  }
  pair_tags(page_, items);
  return true;
}

}  // namespace klib::programs
