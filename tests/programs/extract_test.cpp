// What kextract makes of a page.
#include <algorithm>
#include <filesystem>

#include "workplace.h"

namespace klib::test {
namespace {

class Extract : public Workplace {
 protected:
  // The frames of the page's sentences without their numbers, one after the other.
  std::string frames(const std::string &language, const std::string &page) {
    write("page.html", page);
    const Outcome outcome = run("kextract", "-LANGUAGE " + language + " job.kti page.html");
    if (outcome.status != 0) return outcome.errors;
    std::string frames;
    const std::string file = read("job.kti");
    for (size_t i = 0; (i = file.find('\x90', i)) != std::string::npos;) {
      i = file.find(' ', i) + 1;
      frames += '[';
      frames += shown(file.substr(i, file.find('\x91', i) - i));
      frames += ']';
    }
    return frames;
  }
};

TEST_F(Extract, FontsAnchorsAndWhatStaysOutside) {
  static const struct {
    const char *page, *frames;
  } rows[] = {
      {"a <b>c</b> d", "[a {98}weight{FF}1{99}c{98}weight{FF}0{99} d]"},
      {"a <I class=x>c</I>d", "[a {98}slant{FF}1{99}c{98}slant{FF}0{99}d]"},
      {"a <b>c</b > d", "[a {94}1{95}c{94}2{95} d]"},   // not how the end tag would be written
      {"a <b> c</b> d", "[a {94}1{95} c{94}2{95} d]"},  // white space at an edge
      {"a <b>c </b>d", "[a {94}1{95}c {94}2{95}d]"},
      {"a <b><i>c</i> </b>", "[a {94}1{95}{98}slant{FF}2{99}c{98}slant{FF}0{99}{94}3{95}]"},
      {"<i> <b>a</b> </i> d <a> c <!-- x --> </a> ",
       "[{94}1{95}{98}weight{FF}2{99}a{98}weight{FF}0{99} {94}3{95} d {94}4{95} "
       "c{94}5{95}{94}6{95}]"},
      {"a <code>b </code>", "[a {94}1{95}b{94}2{95}]"},
      {"a <b>c <strong>d</strong></b> e",  // one of its own group inside
       "[a {98}weight{FF}1{99}c {94}2{95}d{94}3{95}{98}weight{FF}0{99} e]"},
      {"a <b>c <i>d</b> e</i> f",  // crossed
       "[a {98}weight{FF}1{99}c {94}2{95}d{98}weight{FF}0{99} e{94}3{95} f]"},
      {"a <a href=x>c</a> d", "[a {94}1{95}c{94}2{95} d]"},
      {"a<img>c <!-- d --> e", "[a{94}1{95}c {94}2{95} e]"},
      {"a <span><i></i></span> d", "[a {94}1{95} d]"},  // no text: one anchor
      {"<p> <b><i>a c</i></b> </p>", "[a c]"},          // around the whole sentence
      {"<a name=x></a><img>a <b>c</b><br>d", "[a {98}weight{FF}2{99}c{98}weight{FF}0{99}][d]"},
      {"<b>a</b> c", "[{98}weight{FF}1{99}a{98}weight{FF}0{99} c]"},
      {"a <b>c. D</b> e", "[a {94}1{95}c.][D{94}3{95} e]"},  // crosses the end of a sentence
      {"a <script>b<c</script>d<pre> e </pre><td>f<textarea> g </textarea>", "[a {94}1{95}d][f]"},
      {"<title>a &amp; b</title><title>a <b></title>", "[a & b]"},
      {"<td>&nbsp;</td><td> </td><p><img></p>", ""},
  };
  for (const auto &row : rows) {
    const std::string text = frames("ENGLISH", row.page);
    EXPECT_EQ(text, shown(coded(row.frames))) << row.page;
  }
}

TEST_F(Extract, Characters) {
  static const struct {
    const char *language, *page, *frames;
  } rows[] = {
      {"ENGLISH", "\xC3\xA9 &eacute; &#233; &#xE9;", "[{E9} {E9} {E9} {E9}]"},
      {"ENGLISH", "a < b > c & d &lt; &gt; &amp;", "[a {9D}003C b {9D}003E c {9D}0026 d < > &]"},
      {"ENGLISH", "a &bogus; &#10; &copy &&#97;mp; <&#97;",
       "[a {9D}0026bogus; {9D}0026#10; {9D}0026copy {9D}0026{9D}0026#97;mp; "
       "{9D}003C{9D}0026#97;]"},
      {"ENGLISH", "a\xC2\xA0&nbsp;\xE2\x82\xAC\xF0\x9F\x98\x80",
       "[a{9D}00A0{9D}00A0{9D}20AC{9D}D83D{9D}DE00]"},
      {"ENGLISH", "a\x1D\x0B\xC2\x90\xC2\x9E", "[a{9D}001D{9D}000B{9D}0090{9E}]"},
      {"RUSSIAN", "\xD1\x8F\xD0\x84\xC2\xA0\xD1\x92", "[{FF}{AA}{9D}00A0{9D}0452]"},
      {"GREEK", "\xCE\xB1\xCD\xBA\xC3\xA9", "[{E1}{9D}037A{9D}00E9]"},
  };
  for (const auto &row : rows)
    EXPECT_EQ(frames(row.language, row.page), shown(coded(row.frames))) << row.page;
}

TEST_F(Extract, Sentences) {
  static const struct {
    const char *language, *page, *frames;
  } rows[] = {
      {"ENGLISH", "One. Two! Three? Four: 5 six. seven: Eight… Nine",
       "[One.][Two!][Three?][Four: 5 six. seven:][Eight{9D}2026][Nine]"},
      {"FRENCH", "Prix : 5 \xE2\x82\xAC. Livr\xC3\xA9s. Oui",
       "[Prix : 5 {9D}20AC.][Livr{E9}s.][Oui]"},
      // Abbreviations with blanks between their parts, of any kind.
      {"GERMAN", "Wie z. B. Rom, d.&nbsp;h. Italien, u. a. Orte. Ende. Das",
       "[Wie z. B. Rom, d.{9D}00A0h. Italien, u. a. Orte.][Ende.][Das]"},
      {"HUNGARIAN", "A 3. Henrik u. Dr. Kis. Vas", "[A 3. Henrik u. Dr. Kis.][Vas]"},
      // Other scripts, by Unicode's rules.
      {"JAPANESE",
       "\xE6\xAD\xA4\xE3\x80\x82<b>\xE5\xBD\xBC\xE3\x80\x82</b>\xE3\x80\x8C\xE6"
       "\x88\x91!\xE3\x80\x8D C. D\xE3\x80\x82"
       "E",
       "[{9D}6B64{9D}3002][{9D}5F7C{9D}3002][{9D}300C{9D}6211!{9D}300D][C. D{9D}3002][E]"},
      {"KOREAN", "\xEA\xB0\x80. \xEB\x82\x98 1.5 Dr. \xEB\x8B\xA4",
       "[{9D}AC00.][{9D}B098 1.5 Dr. {9D}B2E4]"},
      {"ARABIC", "\xD9\x85\xD9\x86\xD8\x9F \xD9\x85\xD9\x86. \xD8\xAF. \xD9\x85\xD9\x86",
       "[{9D}0645{9D}0646{9D}061F][{9D}0645{9D}0646.][{9D}062F. {9D}0645{9D}0646]"},
      // Controls, and elements without a letter or digit.
      {"ENGLISH", "<button>Send now</button><button>Reset all</button><label>One</label>Two",
       "[Send now][Reset all][One][Two]"},
      {"ENGLISH",
       "<h1><a>#</a> One.<a>\xC2\xB6</a></h1><p><i>/</i>, <i>/home</i>, two<p><b>\xC2\xBB</b>",
       "[One.][{98}slant{FF}3{99}/{98}slant{FF}0{99}, {98}slant{FF}4{99}/home{98}slant{FF}0{99}, "
       "two][{BB}]"},
      {"ENGLISH", "<p>New<a><s>(</s>1<s>)</s></a><p><a><s>(</s>x</a> y<p><b>One<a>#</a></b>",
       "[New{94}2{95}{98}line{FF}3{99}({98}line{FF}0{99}1{98}line{FF}4{99}){98}line{FF}0{99}{94}5{"
       "95}]"
       "[{94}7{95}{98}line{FF}8{99}({98}line{FF}0{99}x{94}9{95} y][One]"},
      {"ENGLISH", "(One.) \"Two.\" [Three]", "[(One.)][\"Two.\"][[Three]]"},
      {"ENGLISH", "<p>One.<b> Two</b> <i>three.</i> Four</p>",
       "[One.][Two{94}3{95} {98}slant{FF}"
       "4{99}three.{98}slant{FF}0{99}][Four]"},
      {"ENGLISH", "Dr. No and Mr. X. It 1.5 is", "[Dr. No and Mr. X. It 1.5 is]"},
      {"ENGLISH", "2.1. Title. Text", "[2.1. Title.][Text]"},
      {"GERMAN",
       "Am 3. Mai. \xC3\x9C"
       "ber",
       "[Am 3. Mai.][{DC}ber]"},
      {"RUSSIAN", "\xD0\x90. \xD0\x91\xD0\xB0. \xD0\x92\xD0\xB0", "[{C0}. {C1}{E0}.][{C2}{E0}]"},
  };
  for (const auto &row : rows)
    EXPECT_EQ(frames(row.language, row.page), shown(coded(row.frames))) << row.page;
}

TEST_F(Extract, FilesOfAJob) {
  EXPECT_EQ(
      frames("ENGLISH -KTI-START 7 -KTI-STEP 2 -SHOW-PROGRESS 0",
             "<p>A <b>small</b> <a href=\"x\">step</a>\xC2\xA0<.</p>\n<p>Z"),
      "[A {98}weight{FF}2{99}small{98}weight{FF}0{99} {94}3{95}step{94}4{95}{9D}00A0{9D}003C.][Z]");
  EXPECT_EQ(shown(read_sentences("job.kti")).substr(0, 18), shown(coded("{94}1{95}\n{90}7 A ")));
  EXPECT_NE(read("job.kti").find("\x90"
                                 "9 Z\x91"),
            std::string::npos);
  EXPECT_EQ(read("job.txt"), "A small step\xC2\xA0<.\nZ\n");
  const std::string mark = read("job.kti").substr(17, 16);
  EXPECT_EQ(mark.find_first_not_of("0123456789abcdef"), mark.npos);
  EXPECT_EQ(read("job.anc"), "klib-page 2 " + mark +
                                 " ENGLISH html UTF-8\n=<p>*<b>(<a href=\"x\">)3 </a>=</p>\n<p>");
  EXPECT_EQ(read("job.anx").size(), 4u * 6);
  EXPECT_EQ(files(), "job.anc job.anx job.kti job.txt page.html");
}

TEST_F(Extract, Refuses) {
  static const struct {
    const char *page, *message;
  } rows[] = {
      {"<meta charset=iso\xFF-8859-1>", "page.html:1: unknown encoding 'iso{FF}-8859-1'\n"},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(frames("ENGLISH", row.page), row.message);
    EXPECT_EQ(files(), "page.html");
  }
  EXPECT_EQ(frames("ENGLISH", std::string("a\nb\0c", 5)), "page.html:2: holds a NUL character\n");
  write("page.html", "a");
  EXPECT_EQ(run("kextract", "job.kti .").errors, ".: cannot be read: Is a directory\n");
  EXPECT_EQ(run("kextract", "job.kti /proc/self/mem").errors,
            "/proc/self/mem: cannot be read: Input/output error\n");
  EXPECT_EQ(files(), "page.html");
  EXPECT_EQ(run("kextract", "nowhere/job.kti page.html").errors,
            "nowhere/job.kti: cannot be written: No such file or directory\n");
  EXPECT_EQ(run("kextract", "-LIB-DIRECTORY / job.kti page.html").errors,
            "job.kti: font group \"weight\" is not declared by the parameter files: is "
            "LIB-DIRECTORY /?\n");
}

// Expressions of every form have the last word, those that say plainly how they end and others.
TEST_F(Extract, SentenceExceptionsOfAnyForm) {
  std::filesystem::create_directories(directory_ + "/share/EN");
  write("share/KavroParm",
        "\x96"
        "FONTGROUPS=weight\xFFslant\xFF"
        "face\xFFline\xFFheight\n");
  static const struct {
    const char *expression, *text;
    bool ends;
  } rows[] = {
      {"\\<Xy\\.$", "a Xy. B", false},
      {"\\<Xy\\.$", "a xy. B", true},
      {"[A-C]y*\\.$", "a Byy. B", false},
      {"[A-C]y*\\.$", "a B. B", false},
      {"[A-C]y*\\.$", "a D. B", true},
      {"^[0-9][0-9.]*\\.$", "1.2. B", false},
      {"b[^x]\\.$", "a by. B", false},
      {"x\\{2\\}\\.$", "a xx. B", false},
      {"\\(ab\\)\\1\\.$", "a abab. B", false},
      {"by", "a by. B", false},
      {"y.$", "a by! B", false},
      {"\xE4h\\.$", "a \u00E4h. B", false},
      {"[]y]\\.$", "a by. B", false},
      {"[a\\]\\.$", "a b\\. B", false},
  };
  for (const auto &[expression, text, ends] : rows) {
    write("share/EN/SentenceExceptions", std::string("\\<Dr\\.$\n") + expression + "\n");
    write("page.html", text);
    const Outcome outcome = run(
        "kextract", "-LIB-DIRECTORY share/ -LANGUAGE ENGLISH --encoding utf-8 job.kti page.html");
    EXPECT_EQ(outcome.errors, "") << expression;
    const std::string lines = read("job.txt");
    EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), ends ? 2 : 1) << expression << lines;
  }
}

}  // namespace
}  // namespace klib::test
