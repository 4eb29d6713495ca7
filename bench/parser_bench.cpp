// The parser on 50 MB of text with a font code every 40 bytes or so, with the kinds of tokens that
// programs ask for, compared with expat, with a scanner made by flex, and with bounds.

#include <benchmark/benchmark.h>

#include <array>
#include <cstring>

#include "bench/inputs.h"
#include "klib.h"
#if HAVE_expat
#include <expat.h>
#endif
#if HAVE_flex
extern "C" {
int codes_lex();
extern char *codes_text;
struct yy_buffer_state;
yy_buffer_state *codes__scan_buffer(char *base, size_t size);
void codes__delete_buffer(yy_buffer_state *buffer);
}
#endif

namespace klib::bench {

namespace {

void count_bytes(benchmark::State &state) {
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * coded_text().size()));
}

size_t parse_all(FILE *stream, int32_t flags) {
  size_t tokens = 0;
  init_parser(flags);
  if (stream == nullptr) parse_from_string(coded_text().c_str());
  while (parse(stream) != P_END) {
    benchmark::DoNotOptimize(p_root[parser_level].token[0]);
    tokens++;
  }
  exit_parser();
  return tokens;
}

void klib_string(benchmark::State &state) {
  for (auto _ : state) benchmark::DoNotOptimize(parse_all(nullptr, P_FONT));
  count_bytes(state);
}
void klib_positions(benchmark::State &state) {
  for (auto _ : state) benchmark::DoNotOptimize(parse_all(nullptr, P_FONT | P_COUNT));
  count_bytes(state);
}
void klib_five_kinds(benchmark::State &state) {
  for (auto _ : state)
    benchmark::DoNotOptimize(
        parse_all(nullptr, P_ANCHOR | P_CODE_1E | P_FONT | P_MARK_1D | P_ALIEN));
  count_bytes(state);
}
void klib_words(benchmark::State &state) {
  for (auto _ : state)
    benchmark::DoNotOptimize(parse_all(nullptr, P_ANCHOR | P_CODE_1E | P_FONT | P_WHITE));
  count_bytes(state);
}
BENCHMARK(klib_string)->Name("parse a string/klib")->Unit(benchmark::kMillisecond);
BENCHMARK(klib_five_kinds)->Name("parse, five kinds (1A5)/klib")->Unit(benchmark::kMillisecond);
BENCHMARK(klib_words)->Name("parse, words (225)/klib")->Unit(benchmark::kMillisecond);
BENCHMARK(klib_positions)->Name("parse with positions/klib")->Unit(benchmark::kMillisecond);

// Looks each byte up, stores it, and starts again at each byte that the table stops at.
template <class Next>
size_t scan_and_copy(Next next) {
  static std::array<bool, 256> stops = [] {
    std::array<bool, 256> table{};
    table[0x98] = table[0x99] = true;
    return table;
  }();
  static char token[1 << 16];
  size_t tokens = 0, size = 0;
  for (int c = next(); c > 0; c = next()) {
    token[size++] = static_cast<char>(c);
    if (stops[static_cast<size_t>(c)]) {
      token[size] = '\0';
      benchmark::DoNotOptimize(token);
      benchmark::ClobberMemory();
      size = 0;
      tokens++;
    }
  }
  return tokens;
}

void bound_string(benchmark::State &state) {
  for (auto _ : state) {
    const char *at = coded_text().c_str();
    benchmark::DoNotOptimize(scan_and_copy([&] { return static_cast<unsigned char>(*at++); }));
  }
  count_bytes(state);
}
BENCHMARK(bound_string)->Name("parse a string/scan and copy")->Unit(benchmark::kMillisecond);
BENCHMARK(bound_string)->Name("parse with positions/scan and copy")->Unit(benchmark::kMillisecond);

BENCHMARK(bound_string)
    ->Name("parse, five kinds (1A5)/scan and copy")
    ->Unit(benchmark::kMillisecond);

// The same with words, white space and codes as tokens.
enum Class : uint8_t { text, white, opening, closing, end };

size_t scan_words() {
  static const std::array<Class, 256> classes = [] {
    std::array<Class, 256> table{};
    table[' '] = table['\n'] = white;
    table[0x98] = opening;
    table[0x99] = closing;
    table[0] = end;
    return table;
  }();
  static char token[1 << 16];
  size_t tokens = 0;
  const char *at = coded_text().c_str();
  const auto class_at = [&] { return classes[static_cast<unsigned char>(*at)]; };
  for (Class first = class_at(); first != end; first = class_at()) {
    size_t size = 0;
    if (first == opening) {
      do token[size++] = *at++;
      while (class_at() != closing && class_at() != end);
      if (class_at() == closing) token[size++] = *at++;
    } else {
      do token[size++] = *at++;
      while (class_at() == first);
    }
    token[size] = '\0';
    benchmark::DoNotOptimize(token);
    benchmark::ClobberMemory();
    tokens++;
  }
  return tokens;
}

void bound_words(benchmark::State &state) {
  for (auto _ : state) benchmark::DoNotOptimize(scan_words());
  count_bytes(state);
}
BENCHMARK(bound_words)->Name("parse, words (225)/scan and copy")->Unit(benchmark::kMillisecond);

FILE *text_stream() {
  static FILE *stream = std::fopen(make_file("text", coded_text()).c_str(), "r");
  std::rewind(stream);
  return stream;
}

void klib_stream(benchmark::State &state) {
  for (auto _ : state) benchmark::DoNotOptimize(parse_all(text_stream(), P_FONT));
  count_bytes(state);
}
void bound_stream(benchmark::State &state) {
  for (auto _ : state) {
    FILE *stream = text_stream();
    benchmark::DoNotOptimize(scan_and_copy([&] { return getc_unlocked(stream); }));
  }
  count_bytes(state);
}
BENCHMARK(klib_stream)->Name("parse a stream/klib")->Unit(benchmark::kMillisecond);
BENCHMARK(bound_stream)->Name("parse a stream/getc loop")->Unit(benchmark::kMillisecond);

#if HAVE_flex

void flex_parse(benchmark::State &state) {
  static std::string text = coded_text() + '\0';  // flex wants two NULs at the end
  for (auto _ : state) {
    yy_buffer_state *buffer = codes__scan_buffer(text.data(), text.size() + 1);
    size_t tokens = 0;
    while (codes_lex() != 0) {
      benchmark::DoNotOptimize(codes_text[0]);
      tokens++;
    }
    benchmark::DoNotOptimize(tokens);
    codes__delete_buffer(buffer);
  }
  count_bytes(state);
}
BENCHMARK(flex_parse)->Name("parse a string/flex")->Unit(benchmark::kMillisecond);

#endif

#if HAVE_expat

// Collects the token texts as klib delivers them: runs of text whole, and each tag.
struct Collector {
  XML_Parser parser;
  bool with_positions;
  char text[1 << 16];
  size_t size = 0, tokens = 0;

  void deliver() {
    if (size == 0) return;
    text[size] = '\0';
    if (with_positions) {
      benchmark::DoNotOptimize(XML_GetCurrentLineNumber(parser));
      benchmark::DoNotOptimize(XML_GetCurrentColumnNumber(parser));
    }
    benchmark::DoNotOptimize(text);
    benchmark::ClobberMemory();
    size = 0;
    tokens++;
  }
  void add(const char *piece, size_t length) {
    std::memcpy(text + size, piece, length);
    size += length;
  }
};

void expat_parse(benchmark::State &state, bool with_positions) {
  static Collector collector;
  for (auto _ : state) {
    XML_Parser parser = XML_ParserCreate("ISO-8859-1");
    collector.parser = parser;
    collector.with_positions = with_positions;
    collector.tokens = collector.size = 0;
    XML_SetUserData(parser, &collector);
    XML_SetElementHandler(
        parser,
        [](void *data, const XML_Char *name, const XML_Char **) {
          auto *own = static_cast<Collector *>(data);
          own->deliver();
          own->add(name, std::strlen(name));
          own->deliver();
        },
        [](void *data, const XML_Char *) { static_cast<Collector *>(data)->deliver(); });
    XML_SetCharacterDataHandler(parser, [](void *data, const XML_Char *piece, int length) {
      static_cast<Collector *>(data)->add(piece, static_cast<size_t>(length));
    });
    if (XML_Parse(parser, xml_text().data(), static_cast<int>(xml_text().size()), 1) == 0)
      state.SkipWithError("not well-formed");
    benchmark::DoNotOptimize(collector.tokens);
    XML_ParserFree(parser);
  }
  count_bytes(state);
}
BENCHMARK_CAPTURE(expat_parse, text, false)
    ->Name("parse a string/expat")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(expat_parse, positions, true)
    ->Name("parse with positions/expat")
    ->Unit(benchmark::kMillisecond);

#endif

}  // namespace

}  // namespace klib::bench
