// The format of model files. Numbers are little-endian; a count is a 32-bit floating point number,
// finite and not negative.
//
//   model    := "klib-model 1\n" language language pairs jumps jumps checksum
//   language := types:u32 { kind:u8 length:u32 text occurrences:count unlinked:count }
//   pairs    := for each type of the first language: pairs:u32 { type:u32 count }
//   jumps    := 101 64-bit floating point numbers, of the distances -50 to 50
//   checksum := 64 bits, FNV-1a of all bytes before
//
// The types of a row of pairs ascend. A text is there once in its language.
#include "programs/align/model_file.h"

#include <bit>
#include <cmath>
#include <concepts>

#include "programs/common/utf8.h"

namespace klib::programs::align {
namespace {

constexpr std::string_view magic = "klib-model ", version = "1\n";
constexpr double most = 1e9;  // of a count, so that sums stay finite

template <std::unsigned_integral Number>
void append(Number number, std::string &bytes) {
  for (size_t i = 0; i < sizeof number; i++)
    bytes += static_cast<char>(static_cast<unsigned char>(number >> (8 * i)));
}

void append_size(size_t size, std::string &bytes) { append(static_cast<uint32_t>(size), bytes); }

void append_count(float count, std::string &bytes) {
  append(std::bit_cast<uint32_t>(count), bytes);
}

uint64_t checksum(std::string_view bytes) {
  uint64_t hash = 0xCBF29CE484222325;
  for (const char c : bytes) {
    hash ^= static_cast<unsigned char>(c);
    hash *= 0x100000001B3;
  }
  return hash;
}

void append_language(const LanguageModel &language, std::string &bytes) {
  const std::vector<UnitType> &types = language.vocabulary.types;
  append_size(types.size(), bytes);
  for (size_t i = 0; i < types.size(); i++) {
    bytes += static_cast<char>(types[i].kind);
    append_size(types[i].text.size(), bytes);
    bytes += types[i].text;
    append_count(types[i].occurrences, bytes);
    append_count(i < language.unlinked.size() ? language.unlinked[i] : 0, bytes);
  }
}

void append_jumps(const JumpCounts &jumps, std::string &bytes) {
  for (const double count : jumps) append(std::bit_cast<uint64_t>(count), bytes);
}

// The rest of the bytes. What is not there or not allowed makes it bad, and all that is read from
// then on is 0.
struct ModelReader {
  std::string_view rest;
  bool bad = false;

  bool require(bool condition) {
    bad = bad || !condition;
    return !bad;
  }
  template <std::unsigned_integral Number>
  Number number() {
    Number result = 0;
    if (!require(rest.size() >= sizeof result)) return 0;
    for (size_t i = 0; i < sizeof result; i++)
      result |=
          static_cast<Number>(static_cast<Number>(static_cast<unsigned char>(rest[i])) << (8 * i));
    rest.remove_prefix(sizeof result);
    return result;
  }
  // A number of things, each of which takes `size` bytes at least.
  size_t size(size_t least) {
    const size_t count = number<uint32_t>();
    return require(count <= rest.size() / least) ? count : 0;
  }
  template <typename Float, typename Bits>
  Float count() {
    const auto result = std::bit_cast<Float>(number<Bits>());
    return require(std::isfinite(result) && result >= 0 && result <= static_cast<Float>(most))
               ? result
               : 0;
  }
  float count() { return count<float, uint32_t>(); }
};

void read_language(ModelReader &reader, LanguageModel &language) {
  constexpr size_t least = 14;  // bytes of a type
  const size_t count = reader.size(least);
  for (size_t i = 0; i < count && !reader.bad; i++) {
    const auto kind = reader.number<uint8_t>();
    const size_t length = reader.size(1);
    const std::string_view text = reader.rest.substr(0, length);
    reader.require(length > 0 && kind <= static_cast<uint8_t>(UnitKind::mark) &&
                   find_invalid_utf8(text) == std::string_view::npos);
    if (reader.bad) return;
    reader.rest.remove_prefix(length);
    const int32_t type = find_or_add(language.vocabulary, text, static_cast<UnitKind>(kind));
    reader.require(static_cast<size_t>(type) == i);
    count_occurrences(language.vocabulary, type, reader.count());
    language.unlinked.push_back(reader.count());
  }
}

void read_pairs(ModelReader &reader, Model &model) {
  constexpr size_t least = 8;  // bytes of a pair
  const auto types = static_cast<int64_t>(model.target.vocabulary.types.size());
  for (size_t type = 0; type < model.source.vocabulary.types.size(); type++) {
    const size_t count = reader.size(least);
    int64_t before = -1;
    for (size_t i = 0; i < count; i++) {
      const int64_t target = reader.number<uint32_t>();
      if (!reader.require(target > before && target < types)) return;
      before = target;
      model.pairs.push_back({static_cast<int32_t>(target), reader.count()});
    }
    model.pair_ends.push_back(model.pairs.size());
  }
}

void read_jumps(ModelReader &reader, JumpCounts &jumps) {
  for (double &count : jumps) count = reader.count<double, uint64_t>();
}

}  // namespace

std::string write_model(const Model &model) {
  std::string bytes(magic);
  bytes += version;
  append_language(model.source, bytes);
  append_language(model.target, bytes);
  size_t begin = 0;
  for (size_t type = 0; type < model.source.vocabulary.types.size(); type++) {
    const size_t end = type < model.pair_ends.size() ? model.pair_ends[type] : begin;
    append_size(end - begin, bytes);
    for (; begin < end; begin++) {
      append_size(static_cast<size_t>(model.pairs[begin].target), bytes);
      append_count(model.pairs[begin].count, bytes);
    }
  }
  append_jumps(model.forward_jumps, bytes);
  append_jumps(model.backward_jumps, bytes);
  append(checksum(bytes), bytes);
  return bytes;
}

bool is_model(std::string_view first_bytes) { return first_bytes.starts_with(magic); }

std::string read_model(std::string_view bytes, Model &model) {
  if (!is_model(bytes)) return "is no model";
  if (!bytes.substr(magic.size()).starts_with(version))
    return "is a model of another version; train it again";
  if (bytes.size() < magic.size() + version.size() + sizeof(uint64_t)) return "is cut off";
  const std::string_view body = bytes.substr(0, bytes.size() - sizeof(uint64_t));
  ModelReader end{bytes.substr(body.size())};
  if (end.number<uint64_t>() != checksum(body)) return "is damaged: its checksum is wrong";
  model = Model{};
  ModelReader reader{body.substr(magic.size() + version.size())};
  read_language(reader, model.source);
  read_language(reader, model.target);
  read_pairs(reader, model);
  read_jumps(reader, model.forward_jumps);
  read_jumps(reader, model.backward_jumps);
  if (reader.require(reader.rest.empty())) return "";
  model = Model{};
  return "is damaged: it contains what no model does";
}

}  // namespace klib::programs::align
