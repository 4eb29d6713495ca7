// The transfer of format codes: CopyFontsString takes a source sentence with its codes, a
// translation of plain words and a word alignment between them, and writes every code into the
// translation.
//
// The source is read into words, and its font codes are selected one after the other, to note which
// fonts are in force when each word begins. Every code is given its place in the translation. Then
// the translation is written from left to right: each word begins with the fonts in force at its
// first source word, its codes follow, and a font code is left out where its font is selected
// already. The words come out with one blank between them.

#include "transfer/transfer.h"

#include <cassert>

#include "format/codes.h"
#include "format/fonts.h"
#include "transfer/font_lists.h"

namespace klib::transfer {

namespace {

// While one exists, selections mark the font groups that they touch: take_changes lists them.
struct FontSave {
  FontSave() { Ksave_font_state(); }
  ~FontSave() { Kcleanup_font_save(); }
  FontSave(const FontSave &) = delete;
};

// The translation as it is written.
struct Assembly {
  const SourceTable &source;
  const TargetTable &targets;
  const memory::ArenaVector<PlacedCode> &placed;
  FontLists &lists;
  memory::ArenaVector<uint32_t> candidates;  // scratch
  memory::Buffer text = {};
  size_t copied = 0;       // the translation up to here is in `text`
  size_t next_code = 0;    // in `placed`
  uint32_t last_list = 0;  // whose fonts were selected last
};

// Selects the fonts of the source's codes and notes the fonts in force at each word: those of the
// codes of the words before it.
FontLists note_font_states(SourceTable &source, memory::Arena &arena) {
  const FontSave save;
  reset_named_font_groups();
  FontLists lists = make_font_lists(arena);
  uint32_t list = 0;
  bool changed = false;
  for (size_t w = 0; w < source.words.size(); ++w) {
    if (changed) list = add_font_list(lists);
    changed = false;
    source.words[w].font_state = list;
    for (const WordCode &code : source.codes_of(w)) {
      if (code.kind != P_FONT) continue;
      fonts::select(source.body(code));
      changed = true;
    }
  }
  return lists;
}

void copy_up_to(Assembly &assembly, size_t end) {
  assembly.text.append(assembly.targets.text.substr(assembly.copied, end - assembly.copied));
  assembly.copied = end;
}

void write_code(Assembly &assembly, int32_t kind, const char *body, size_t length, size_t offset) {
  constexpr codes::Code font = codes::of(P_FONT), anchor = codes::of(P_ANCHOR);
  if (kind == P_FONT && !fonts::select_unless_selected(body)) return;
  copy_up_to(assembly, offset);
  assembly.text.append(static_cast<char>(kind == P_FONT ? font.open : anchor.open));
  assembly.text.append({body, length});
  assembly.text.append(static_cast<char>(kind == P_FONT ? font.close : anchor.close));
}

// The fonts in force at the first source word that the target word names.
void prefix_font_states(Assembly &assembly, const TargetWord &target) {
  const int32_t *number = target.alignment;
  while (*number == unaligned) ++number;
  if (*number == -1) return;
  const uint32_t list = assembly.source.words[static_cast<size_t>(*number)].font_state;
  if (list == 0) return;
  const auto write = [&](std::string_view name) {
    write_code(assembly, P_FONT, name.data(), name.size(), target.start);
  };
  find_candidates(assembly.lists, assembly.last_list, list, assembly.candidates);
  for (const uint32_t group : assembly.candidates) write(listed_font(assembly.lists, list, group));
  if (const char *packet = assembly.lists.lists[list].packet) write(packet);
  assembly.last_list = list;
}

void assemble_target_word(Assembly &assembly, const TargetWord &target) {
  prefix_font_states(assembly, target);
  for (; assembly.next_code < assembly.placed.size(); ++assembly.next_code) {
    const PlacedCode &placed = assembly.placed[assembly.next_code];
    if (placed.offset > target.end()) return;
    const WordCode &code = assembly.source.codes[placed.code];
    write_code(assembly, code.kind, assembly.source.body(code), code.length, placed.offset);
  }
}

// Words that are one blank apart are copied together, as long as no code comes between them.
memory::Text assemble_translation(Assembly &assembly) {
  size_t gap = assembly.targets.words.front().start;  // where the last word ended
  assembly.copied = gap;
  for (const TargetWord &target : assembly.targets.words) {
    if (target.start - gap > 1 || (target.start != gap && assembly.targets.text[gap] != ' ')) {
      copy_up_to(assembly, gap);
      assembly.text.append(' ');
      assembly.copied = target.start;
    }
    assemble_target_word(assembly, target);
    gap = target.end();
  }
  copy_up_to(assembly, gap);
  return memory::Text(assembly.text.detach());
}

// Offsets have 32 bits: a text of 2 GiB or more counts as more than the memory can hold.
std::string_view measured(const char *text) {
  const std::string_view view(text);
  if (view.size() > INT32_MAX) memory::fail_allocation();
  return view;
}

// Every code belongs to a word, knows the list of fonts at its word, and is placed at most once, an
// anchor exactly once.
[[maybe_unused]] bool counts_hold(const SourceTable &source,
                                  const memory::ArenaVector<PlacedCode> &placed) {
  size_t codes = 0, anchors = 0, placed_anchors = 0;
  for (size_t w = 0; w < source.words.size(); ++w) codes += source.codes_of(w).size();
  for (const WordCode &code : source.codes) anchors += code.kind == P_ANCHOR;
  for (const PlacedCode &code : placed) placed_anchors += source.codes[code.code].kind == P_ANCHOR;
  return codes == source.codes.size() && placed_anchors == anchors && placed.size() <= codes;
}

enum class Alignment { given, missing, default_requested };

Alignment alignment_kind(int32_t *const *alignment) {
  if (alignment == nullptr || alignment[0] == nullptr) return Alignment::missing;
  const bool requested = alignment[0][0] == default_request && alignment[0][1] == -1;
  return requested ? Alignment::default_requested : Alignment::given;
}

char *copy_fonts(std::string_view source_text, std::string_view target_text, int32_t **alignment) {
  if (!has_codes(source_text)) return memory::copy(target_text).release();
  memory::Arena arena;
  SourceTable source = read_source_words(source_text, arena);
  if (source.codes.empty()) return memory::copy(target_text).release();
  FontLists lists = note_font_states(source, arena);
  assert(source.words.back().font_state < lists.lists.size());
  TargetTable targets = read_target_words(target_text, arena);
  const auto without_transfer = [&](std::string_view translation) {
    return memory::copy(source.has_anchors ? source_text : translation).release();
  };
  if (targets.words.empty()) return without_transfer("");

  const Alignment kind = alignment_kind(alignment);
  DefaultLists made;
  if (kind != Alignment::given) {
    made = make_default_alignment(targets, source.words.size());
  } else {
    if (check_alignment(alignment, targets.words.size(), source.words.size()) != 0)
      return without_transfer(target_text);
    for (size_t k = 0; k < targets.words.size(); ++k) targets.words[k].alignment = alignment[k];
  }
  const auto placed = distribute_codes(source, targets, arena);
  assert(counts_hold(source, placed));

  const FontSave save;
  reset_named_font_groups();
  Assembly assembly{.source = source,
                    .targets = targets,
                    .placed = placed,
                    .lists = lists,
                    .candidates = memory::ArenaVector<uint32_t>(arena)};
  assembly.text.reserve(source_text.size() + target_text.size());
  memory::Text result = assemble_translation(assembly);
  assert(assembly.next_code == placed.size() && assembly.copied == targets.words.back().end());
  if (kind == Alignment::default_requested) {
    for (size_t k = 0; k < made.size(); ++k) alignment[k] = made[k].release();
    alignment[made.size()] = nullptr;
  }
  return result.release();
}

}  // namespace

}  // namespace klib::transfer

// Exported names

using namespace klib;

char *CopyFontsString(const char *source, const char *target, int32_t **alignment) {
  return memory::guarded<char *>(nullptr, [&] {
    return transfer::copy_fonts(transfer::measured(source), transfer::measured(target), alignment);
  });
}
