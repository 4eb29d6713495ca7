// Every operation that allocates, with its first, second, third, ... allocation failing, until it
// succeeds: no crash, nothing left over, the report in the log, and the same call then works.

#include <fcntl.h>

#include "tests/support.h"

namespace klib::test {

namespace {

class Exhaustion : public Library {};

void release_list(char **list) {
  for (char **text = list; list != nullptr && *text != nullptr; ++text) Kfree(*text);
  Kfree(list);
}

void assign(const char *notation) { Kmanage_parameter_line(bytes(notation).c_str()); }

void declare_fonts() {
  P_init_fonts();
  assign("FONT=Roman{FF}Bold{FF}Italic");
  assign("FONT=Mono{FF}MonoBold");
  assign("FONTGROUPS=H{FF}I");
  assign("FONT-PACKET=Heading{FF}Bold{FF}MonoBold");
}

void select(const char *notation) { Kselect_font(bytes(notation).data()); }

void transfer(const char *source, const char *target) {
  int32_t first[] = {1, -1}, second[] = {0, 2, -1};
  int32_t *alignment[] = {first, second, nullptr};
  Kfree(CopyFontsString(bytes(source).c_str(), target, alignment));
  int32_t request[] = {119, -1};
  int32_t *made[] = {request, nullptr, nullptr};
  Kfree(CopyFontsString(bytes(source).c_str(), target, made));
  for (int32_t *list : made)
    if (list != request) Kfree(list);
}

void parse_all(const std::string &text, int32_t flags) {
  init_parser(flags);
  parse_from_string(text.c_str());
  while (parse(nullptr) != P_END) {
    init_parser(P_FONT);
    parse_from_string("a");
    parse(nullptr);
    exit_parser();
  }
  exit_parser();
}

struct Row {
  const char *operation;
  void (*run)();
};

const Row rows[] = {
    {"Ksourcecode_defaults_for_parms", [] { Ksourcecode_defaults_for_parms("x"); }},
    {"Kinit_parameters", [] { Kinit_parameters(), Kcleanup_parameters(); }},
    {"Kstart_prog", [] { Kstart_prog("x", "RU-EN"); }},
    {"Kstart_logging_file", [] { Kstart_logging_file("other.log"); }},
    {"Kmanage_parameter_line",
     [] {
       for (const char *line : {"TASK=x", "LANGUAGE=RUSSIAN", "DIRECTION=A-B", "LOGGING=1"})
         assign(line);
     }},
    {"Kread_all_parameter_files", [] { Kread_all_parameter_files("doc.txt"); }},
    {"Kfile_type", [] { Kfree(Kfile_type("a.txt")); }},
    {"Knew_type", [] { Kfree(Knew_type("a.txt", "log", 0)); }},
    {"Klib_pathname", [] { Kfree(Klib_pathname("x", 1)), Kfree(Klib_pathname("x", 0)); }},
    {"Kdirectory_append", [] { Kfree(Kdirectory_append("a", "b")); }},
    {"Kbin_pathname", [] { Kfree(Kbin_pathname("x")); }},
    {"Ksearch_path", [] { release_list(Ksearch_path("/a/b/c", "x")); }},
    {"Kpathname", [] { Kfree(Kpathname("x")), Kfree(Kpathname("/x")), Kfree(Kcwd()); }},
    {"parse",
     [] { parse_all(bytes("a{98}Bold{99} ") + std::string(5000, 'x'), P_FONT | P_COUNT); }},
    {"parse, lines",
     [] { parse_all(bytes("a{0A}b{97}c{0A}{90}1 x{91}"), P_CODE_LINE | P_SENTENCE); }},
    {"real_string_length", [] { real_string_length("abc"); }},
    {"font definitions", [] { declare_fonts(), P_cleanup_fonts(); }},
    {"font selection",
     [] {
       declare_fonts();
       for (const char *name : {"Bold", "H{FF}Arial", "X{FF}Arial", "Heading", "Courier"}) {
         select(name);
         Kis_font_selected(bytes(name).data());
       }
       reset_named_font_groups();
       P_cleanup_fonts();
     }},
    {"single font",
     [] {
       declare_fonts();
       number_of("SINGLE-FONT-GROUP") = 1;
       select("Bold"), select("Italic");
       number_of("SINGLE-FONT-GROUP") = 0;
       P_cleanup_fonts();
     }},
    {"font save",
     [] {
       declare_fonts();
       select("H{FF}Arial");
       Ksave_font_state();
       select("Heading"), select("H{FF}Times");
       Kfree(Kfont_changes_since_save(1, 0, 0));
       Krestore_font_state();
       Kcleanup_font_save();
       Kfree(Kfont_changes(bytes("{98}Italic{99}{98}I{FF}x{99}").c_str(), 0, 0));
       Kcleanup_font_save();
       P_cleanup_fonts();
     }},
    {"Kfonts_in_string",
     [] { release_list(Kfonts_in_string(bytes("a{98}b{99}{98}c{99}").c_str())); }},
    {"CopyFontsString",
     [] {
       declare_fonts();
       transfer("a{98}Bold{99}b {94}1{95} {1E}c{98}H{FF}x{99} d{1F}", "x y");
       transfer("a b {98}Italic{99} c {94}7{95}", "x y");
       P_cleanup_fonts();
     }},
    {"alien characters",
     [] {
       const std::string text = bytes("a{9D}00E9{98}{9D}1234{99}");
       char *without = WithoutAlienCharacters(const_cast<char *>(text.c_str()));
       Kfree(without);
       char *translation = string_copy(bytes("b{9D}").c_str());
       if (translation != nullptr) Kfree(CopyAlienCharacters(text.c_str(), translation, 1));
     }},
    {"anchors",
     [] {
       Kfree(make_anchor()), Kfree(make_font_anchor());
       const int32_t text = Kopen("text", O_RDONLY), index = Kopen("index", O_RDONLY);
       read_anchor_indexes(index);
       Kfree(read_anchor(text, 1));
       free_anchor_indexes();
       Kclose(text, 0), Kclose(index, 0);
     }},
    {"kti_format",
     [] {
       FILE *stream = Kfopen("out.kti", "w");
       init_kti_format(1);
       std::string sentence(5000, 'x');
       kti_format(stream, sentence.data(), 1);
       Kfclose(stream, 0);
     }},
    {"Kcharacter_types_regex",
     [] {
       char **types = Kcharacter_types_regex();
       for (int i = 0; types != nullptr && i < 11; ++i) Kfree(types[i]);
       Kfree(types);
     }},
    {"string arrays",
     [] {
       char a[] = "a", b[] = "b,c";
       char **array = a_make(3, 1, 1);
       if (array != nullptr) array[0] = a;
       if (array != nullptr && (array = a_check(3, array + 1)) != nullptr) {
         array[1] = b;
         Kfree(a_string(3, 0, 1));
         release_list(a_copy(3, 0, 2));
       }
       a_free(3);
       Kfree(a_separator(b, ',', 0));
     }},
    {"byte stacks",
     [] {
       s_make(3, 2, 2);
       for (int i = 0; i < 10; ++i) s_push(3, 'x');
       s_fill(3, "a longer text");
       s_stack(3);
       Kfree(_stack[3].base);
       _stack[3] = byte_stack{};
     }},
    {"double stack",
     [] {
       init_double_stack();
       for (int i = 0; i < 60; ++i) push_on_double_stack(i, "x");
       reuse_double_stack();
       free_double_stack();
     }},
    {"word lists",
     [] {
       if (Klist_in("list") == 0) {
         Ksort_list();
         Kdump_list("dump");
         Kdestroy_list();
       }
       int32_t count;
       char **entries = Kndxfile_to_array("list", &count);
       if (entries != nullptr) Kfree(entries[0]);
       Kfree(entries);
     }},
    {"string routines",
     [] {
       char *text = string_copy("a cat");
       if (text != nullptr) Kfree(replace(text, "cat", "tiger"));
       Kfree(substring("hello", 1, 3));
       int32_t count;
       Kfree(positions_of("a,b", ',', &count));
     }},
    {"Kmain_loop",
     [] {
       char program[] = "p", option[] = "-TASK", value[] = "x", file[] = "doc.txt";
       char *argv[] = {program, option, value, file};
       Kmain_loop(4, argv, "p", "c", 1, reinterpret_cast<K_process_function>(+[](char *) {}),
                  nullptr, nullptr);
       Kcleanup_parameters();
     }},
};

TEST_F(Exhaustion, LeavesEveryOperationUsable) {
  write_file("doc.par", bytes("{96}FONT=A{FF}B\n{96}TASK=y\n"));
  write_file("list", "b\na\nc\n");
  write_file("text", "abc");
  write_file("index", std::string("\0\0\0\0\3\0\0\0", 8));
  for (const Row &row : rows) {
    bool failed = true;
    for (int n = 1; failed; ++n) {
      SCOPED_TRACE(std::string(row.operation) + ", allocation " + std::to_string(n));
      release_modules();
      const int64_t before = blocks_in_use();
      Ksourcecode_defaults_for_parms("c:\\kavro\\");
      log();
      {
        FailingAllocation nth(n);
        row.run();
        failed = nth.happened();
      }
      EXPECT_EQ(log().find("NO MORE MEMORY!\n") != std::string::npos, failed);
      row.run();
      release_modules();
      EXPECT_EQ(blocks_in_use(), before);
      ASSERT_LT(n, 2000);
    }
  }
}

}  // namespace

}  // namespace klib::test
