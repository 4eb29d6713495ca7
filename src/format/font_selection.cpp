// The fonts in force: selecting one, asking for one, and listing those of a text.
//
// A name is the body of a font code {98}name{99}. It has one of four meanings, in this order:
// 1. while "SINGLE-FONT-GROUP" is set, every name is the single font;
// 2. a name with the byte {FF} selects in the named group before the first {FF}: there the whole
//    text is the selection;
// 3. the name of a font packet selects what the packet names;
// 4. any other name is a font of a font group, whose other fonts it replaces.
//
// Tested by fonts_test.cpp.

#include <algorithm>
#include <cstring>

#include "containers/slots.h"
#include "format/fonts.h"
#include "format/parser.h"
#include "frame/messages.h"
#include "parameters/parameters.h"

namespace klib::fonts {

namespace {

bool single_font_group() { return parameters::number(parameters::Number::single_font_group) != 0; }

// The named group before the separator, or group 0 in its place, with a report; none when there is
// no named group at all. The text itself stays as it is, so that messages can show all of it.
int32_t named_group_of(const char *name, const char *group_end, bool selecting) {
  const std::string_view group(name, static_cast<size_t>(group_end - name));
  const Name *found = find(state.tables.named_groups, group);
  if (found != nullptr) return found->group;
  const memory::Text group_name = memory::copy(group);
  if (selecting)
    Kmessage(MESSAGE_UNDEFINED_GROUP_FOR_FONT, group_name.get(), name);
  else
    Kmessage(MESSAGE_UNDEFINED_GROUP, group_name.get());
  if (state.tables.named_group_count == 0) {
    Kabort_prog();
    return none;
  }
  Kmessage(MESSAGE_USING_GROUP_INSTEAD, state.tables.named_group_names[0]);
  return 0;
}

void select_named_font(const char *name, const char *group_end) {
  const int32_t group = named_group_of(name, group_end, true);
  if (group == none) return;
  change_named_font(group, memory::copy(name).release());
  if (!state.save.active) return;
  insert(state.save.touched_named, group);
  insert(state.save.recent_named, group);
}

bool is_named_font_selected(const char *name, const char *group_end) {
  const int32_t group = named_group_of(name, group_end, false);
  if (group == none) return false;
  const char *selection = state.selection.named_group_fonts[group];
  return selection != nullptr && std::strcmp(selection, name) == 0;
}

}  // namespace

void select_font(const Name *found, const char *name) {
  if (found != nullptr && found->group != none)
    change_selected_font(found->group, found->number);
  else
    Kmessage(MESSAGE_UNDEFINED_FONT, name);
}

bool is_font_selected(const Name *found, const char *name) {
  if (found != nullptr && found->group != none)
    return state.selection.selected_font[found->group] == found->number;
  Kmessage(MESSAGE_UNDEFINED_FONT, name);
  return state.tables.font_group_count != 0 && state.selection.selected_font[0] == 0;
}

void select(const char *name) {
  state.selection.packet_selected = false;
  // The name may be the text that the selection is about to release.
  if (single_font_group()) return replace_single_font(memory::copy(name).release());
  if (const char *end = std::strchr(name, separator)) return select_named_font(name, end);
  const Name *found = find(state.tables.names, name);
  if (found == nullptr || found->packet == none) return select_font(found, name);
  select_packet(found->packet);
}

bool is_selected(const char *name) {
  if (single_font_group()) return single_font != nullptr && std::strcmp(single_font, name) == 0;
  if (const char *end = std::strchr(name, separator)) return is_named_font_selected(name, end);
  const Name *found = find(state.tables.names, name);
  if (found == nullptr || found->packet == none) return is_font_selected(found, name);
  return is_packet_selected(found->packet);
}

bool select_unless_selected(const char *name) {
  const Name *found = find(state.tables.names, name);
  const bool is_font = found != nullptr && found->packet == none && found->group != none;
  // Most names are fonts, and need one lookup. A font's name may look like a named group's.
  if (is_font && !single_font_group() && std::strchr(name, separator) == nullptr) {
    if (state.selection.selected_font[found->group] == found->number) return false;
    state.selection.packet_selected = false;
    change_selected_font(found->group, found->number);
    return true;
  }
  if (is_selected(name)) return false;
  select(name);
  return true;
}

bool names_known_group(const char *name) {
  const std::string_view whole(name);
  return find(state.tables.named_groups, whole.substr(0, whole.find(separator))) != nullptr;
}

memory::Array<char *> make_list(size_t count) {
  constexpr int32_t step = 20;
  const size_t room = (count / step + 1) * step;  // the closing null included
  const auto elements = static_cast<int32_t>(std::min<size_t>(room, INT32_MAX));
  memory::Array<char *> list(checked(a_make(slots::font_scratch, elements, step)));
  list[count] = nullptr;
  return list;
}

}  // namespace klib::fonts

// Exported names

using namespace klib;
using namespace klib::fonts;

void Kselect_font(char *name) {
  memory::guarded([&] { fonts::select(name); });
}

int32_t Kis_font_selected(char *name) {
  return memory::guarded<int32_t>(0, [&] { return fonts::is_selected(name); });
}

char **Kfonts_in_string(const char *text) {
  return memory::guarded<char **>(nullptr, [&] {
    memory::Vector<memory::Text> fonts;
    parser::Level level(P_FONT, text);
    for (int32_t kind; (kind = level.next()) != P_END;)
      if (kind == P_FONT) fonts.push_back(memory::copy(body(p_root[parser_level].token)));
    memory::Array<char *> list = make_list(fonts.size());
    memory::move_texts(fonts, list.get());
    return list.release();
  });
}
