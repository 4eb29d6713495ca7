#include "programs/document/slots.h"

#include "programs/common/utf8.h"

namespace klib::programs {
namespace {

constexpr char slot_mark = '\xFF';

}  // namespace

bool find_slot(std::string_view raw, size_t from, SlotPlace &slot) {
  const size_t begin = raw.find(slot_mark, from);
  if (begin == raw.npos) return false;
  const size_t middle = raw.find(slot_mark, begin + 1);
  if (middle == raw.npos) return false;
  const size_t end = raw.find(slot_mark, middle + 1);
  if (end == raw.npos) return false;
  slot = {begin, end + 1, raw.substr(begin + 1, middle - begin - 1),
          raw.substr(middle + 1, end - middle - 1)};
  return true;
}

void append_slot(std::string_view key, std::string_view written, std::string &raw) {
  raw += slot_mark;
  raw.append(key) += slot_mark;
  raw.append(written) += slot_mark;
}

bool is_valid_raw(std::string_view raw) {
  const auto is_valid = [](std::string_view text) {
    return find_invalid_utf8(text) == std::string_view::npos;
  };
  size_t position = 0;
  for (SlotPlace slot; find_slot(raw, position, slot); position = slot.end)
    if (!is_valid(raw.substr(position, slot.begin - position)) || !is_valid(slot.key) ||
        !is_valid(slot.written))
      return false;
  return is_valid(raw.substr(position));
}

}  // namespace klib::programs
