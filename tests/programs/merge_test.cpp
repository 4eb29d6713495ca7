// What kmerge makes of sentences that have been through a translation.
#include "workplace.h"

#include <filesystem>
#include <vector>

namespace klib::test {
namespace {

class Merge : public Workplace {
 protected:
  // Extracts the page, puts `frames` in the place of its sentence file, and merges.
  Outcome merge(const std::string &page, const std::string &frames) {
    write("page.html", page);
    run("kextract", "-LANGUAGE ENGLISH job.kti page.html");
    write_sentences("out.kti", coded(frames));
    return run("kmerge", "-LANGUAGE ENGLISH out.kti job.anc result.html");
  }
};

TEST_F(Merge, NestsWhatAnyOrderHas) {
  static const struct {
    const char *page, *frames, *result, *messages;
  } rows[] = {
      // Fonts: white space is inside when both sides have the font; the smaller number is outside.
      {"a <b>c</b> <i>d</i>",
       "{90}0 {98}weight{FF}1{99}A {98}weight{FF}0{99}{98}slant{FF}2{99}C D{91}",
       "<b>A</b> <i>C D</i>", ""},
      {"a <b>c <i>d</i></b>",
       "{90}0 {98}slant{FF}2{99}{98}weight{FF}1{99}A{98}slant{FF}0{99} C{91}", "<b><i>A</i> C</b>",
       ""},
      {"a <b>c</b> <i>d</i>",
       "{90}0 {98}weight{FF}1{99}A {98}slant{FF}2{99}C {98}weight{FF}0{99}D{91}",
       "<b>A <i>C</i></b><i> D</i>",
       "out.kti:2: sentence 0: the element of anchor 2 is closed and opened again\n"},
      // A font that was opened after an anchor stays after it, and closes before its end.
      {"a <a href=x><b>c</b></a> d",
       "{90}0 {98}weight{FF}2{99}{94}1{95}A{94}3{95} {98}weight{FF}0{99}C{91}",
       "<a href=x><b>A</b></a> C", ""},
      // Pairs of anchors: crossed, inverted, and reaching out of their sentence.
      {"a <a>c</a> <u > d</u> e", "{90}0 {94}1{95}A {94}3{95}C{94}2{95} D{94}4{95} E{91}",
       "<a>A <u >C</u></a><u > D</u> E",
       "out.kti:2: sentence 0: the element of anchor 3 is closed and opened again\n"},
      {"a <a>c d</a> e", "{90}0 Xx Y{94}2{95}y Z {94}1{95}Ww V{91}", "Xx <a>Yy Z Ww</a> V",
       "out.kti:2: sentence 0: anchor 1 came out after its end; it is put around both words\n"},
      {"a <a>c <q>d. E</q> f</a> g",
       "{90}0 A {94}2{95}C {94}1{95}D.{91}{94}3{95}{90}1 E{94}5{95} F{94}4{95} G{91}",
       "A <a>C <q>D. E</q> F</a> G",
       "out.kti:2: sentence 0: the anchors from 1 to 2 are put back into their order\n"
       "out.kti:2: sentence 1: the anchors from 4 to 5 are put back into their order\n"},
      // Text is text whatever it looks like.
      {"a <b>c</b> d",
       "{90}0 <x> & {9D}003Cx {9D}003C{9D}0026 {9D}263A{9D}D83D{9D}DE00{98}weight{FF}1{99}C{91}",
       "&lt;x&gt; &amp; &lt;x <& &#9786;&#128512;<b>C</b>", ""},
  };
  for (const auto &row : rows) {
    const Outcome outcome = merge(row.page, row.frames);
    EXPECT_EQ(read("result.html"), row.result) << row.frames;
    EXPECT_EQ(outcome.errors, row.messages) << row.frames;
    EXPECT_EQ(outcome.status, 0) << row.frames;
  }
}

// Whether every closing tag of the page closes the tag opened last.
bool is_nested(const std::string &page) {
  std::vector<std::string> open;
  for (size_t i = 0; (i = page.find('<', i)) != page.npos; i++) {
    if (page[i + 1] != '/') {
      open.push_back(page.substr(i + 1, 1));
    } else {
      if (open.empty() || page[i + 2] != open.back()[0]) return false;
      open.pop_back();
    }
  }
  return open.empty();
}

TEST_F(Merge, ManyCrossingPairsStayLinear) {
  constexpr int pairs = 600;  // opened by the anchors 2 to 601, closed in the same order
  std::string page = "<p>y ", frames = "{94}1{95}{90}0 Y ";
  for (int i = 0; i < pairs; i++) {
    page += i % 2 == 0 ? "<a  x>w " : "<b  x>w ";
    frames += "{94}" + std::to_string(i + 2) + "{95}W ";
  }
  for (int i = pairs - 1; i >= 0; i--) {
    page += i % 2 == 0 ? "x</a >" : "x</b >";
    frames += "X{94}" + std::to_string(pairs + 2 + i) + "{95} ";
  }
  const Outcome outcome = merge(page + " z", frames + "{91}");
  const std::string result = read("result.html");
  EXPECT_EQ(outcome.status, 0) << outcome.errors.substr(0, 500);
  EXPECT_TRUE(is_nested(result.substr(3)));
  EXPECT_LT(result.size(), 6 * page.size());
  EXPECT_NE(outcome.errors.find("crosses too many others; it is put around the whole sentence"),
            std::string::npos);
}

TEST_F(Merge, ReportsAnchorsThatAreNotWhereTheyShouldBe) {
  static const struct {
    const char *page, *frames, *result, *messages;
  } rows[] = {
      {"a<img>b c", "{90}0 A C{91}", "A C", "job.anc: anchor 1 is lost\n"},
      {"a<img><a>c</a><hr>", "{90}0 A{94}2{95}C{91}{94}4{95}", "A<a>C</a><hr>",
       "out.kti:2: sentence 0: anchor 2 is not closed; it is closed at the end of the sentence\n"
       "job.anc: anchor 1 is lost\njob.anc: anchor 3 is lost\n"},
      {"a<img><a>c</a><hr>", "{90}0 {94}1{95}A{94}1{95}C{94}3{95}{91}{94}4{95}{94}4{95}",
       "<img>AC<hr><hr>",
       "out.kti:2: sentence 0: anchor 1 is there twice; the second is left out\n"
       "out.kti:2: sentence 0: anchor 3 closes anchor 2, which is not there, and is left out\n"
       "out.kti:2: anchor 4 is in an earlier place, too\njob.anc: anchor 2 is lost\n"},
  };
  for (const auto &row : rows) {
    const Outcome outcome = merge(row.page, row.frames);
    EXPECT_EQ(read("result.html"), row.result) << row.frames;
    EXPECT_EQ(outcome.errors, row.messages) << row.frames;
    EXPECT_EQ(outcome.status, 1) << row.frames;
  }
  EXPECT_EQ(merge("a <b>c</b> d", "{90}0 A{91}").errors,
            "job.anc: anchor 1, a font, is not used\n");
}

TEST_F(Merge, Refuses) {
  static const struct {
    const char *frames, *message;
  } rows[] = {
      {"{90}0 A{91}\n{90}1 B", "out.kti:3: a sentence is cut off\n"},
      {"\n\n x {90}0 A{91}", "out.kti:4: text outside of a sentence\n"},
      {"{90}0 A{00}B{91}", "out.kti:2: a sentence is cut off\n"},
      {"\n{90}0 A{91}{00}", "out.kti:3: holds a NUL byte\n"},
      {"{90}0 {94}9{95}A{91}", "out.kti:2: sentence 0: there is no anchor 9\n"},
      {"{90}0 {98}weight{FF}2{99}A{91}", "out.kti:2: sentence 0: anchor 2 is no font\n"},
      {"{90}0 {98}width{FF}1{99}A{91}", "out.kti:2: unknown font 'width{FF}1'\n"},
      {"{90}0 {94}x{95}A{91}", "out.kti:2: an anchor without a number\n"},
      {"{90}0 {9D}00ZZA{91}", "out.kti:2: sentence 0: {9D}00ZZ is no character of ENGLISH\n"},
  };
  for (const auto &row : rows) {
    const Outcome outcome = merge("a <b>c</b> <img>d", row.frames);
    EXPECT_EQ(outcome.errors, row.message) << row.frames;
    EXPECT_EQ(outcome.status, 1) << row.frames;
    EXPECT_EQ(read("result.html"), "(none)") << row.frames;
  }
  const std::string index = read("job.anx"), anchors = read("job.anc");
  const size_t end = anchors.find('\n') + 1;
  write("job.anc", anchors.substr(0, end) + coded("*<{00}>") + anchors.substr(end + 4));
  EXPECT_EQ(run("kmerge", "job.kti job.anc result.html").errors, "job.anc: anchor 1 is damaged\n");
  write("job.anc", anchors);
  write("job.anx", index.substr(0, index.size() - 4));
  EXPECT_EQ(run("kmerge", "job.kti job.anc result.html").errors,
            "job.anx: does not fit job.anc: it ends at 52, the file at 58\n");
  for (const std::string &damaged : {std::string(), std::string("abc"), index + "x"}) {
    write("job.anx", damaged);
    EXPECT_EQ(run("kmerge", "job.kti job.anc result.html").errors, "job.anx: is no anchor index\n");
  }
}

TEST_F(Merge, WritesTheEncodingOfThePage) {
  const std::string page = "<meta charset=iso-8859-1><p>Caf\xE9 \x80</p>";
  EXPECT_EQ(merge(page, "{94}1{95}{90}0 Caf{E9}{9D}20AC{9D}263A{91}{94}2{95}").errors, "");
  EXPECT_EQ(read("result.html"), "<meta charset=iso-8859-1><p>Caf\xE9\x80&#9786;</p>");
}

// Checked in the same way by every program.
TEST_F(Merge, OutputThroughLinksAndPipes) {
  merge("<p>a", "{94}1{95}{90}0 A{91}");
  std::filesystem::create_symlink("result.html", directory_ + "/link.html");
  write("result.html", "old");
  EXPECT_EQ(run("kmerge", "out.kti job.anc link.html").status, 0);
  EXPECT_EQ(read("result.html"), "<p>A");
  EXPECT_TRUE(std::filesystem::is_symlink(directory_ + "/link.html"));
  EXPECT_EQ(run("kmerge", "out.kti job.anc /dev/stdout").output, "<p>A");
  EXPECT_EQ(run("kmerge", "out.kti job.anc /dev/full").errors,
            "/dev/full: could not be written: No space left on device\n");
}

// What was under a name stays there, and no other file is left.
TEST_F(Merge, WritesFilesWholeOrNotAtAll) {
  const std::string text(600, 'a');
  merge("<p>" + text, "{94}1{95}{90}0 " + text + "{91}");
  write("result.html", "old");
  const std::string before = files();
  for (const auto &[program, arguments, message] :
       {std::tuple("kmerge", "out.kti job.anc result.html", "result.html"),
        {"kextract", "new.kti page.html", "new.kti"}}) {
    const Outcome outcome = run(program, arguments, "ulimit -f 1; ");
    EXPECT_EQ(outcome.errors, std::string(message) + ": could not be written: File too large\n");
    EXPECT_EQ(outcome.status, 1) << program;
  }
  for (const auto &[program, arguments, message] :
       {std::tuple("kmerge", "out.kti job.anc result.html", "result.html: could not be written:"),
        {"kextract", "new.kti page.html", ": could not be written:"}}) {
    const Outcome outcome = run(program, arguments, FAILING_CLOSE);
    EXPECT_NE(outcome.errors.find(message), std::string::npos) << outcome.errors;
    EXPECT_EQ(outcome.status, 1) << program;
  }
  EXPECT_EQ(files() + " " + read("result.html"), before + " old");
  EXPECT_EQ(run("kmerge", "-LOG-PATHNAME no/x.log out.kti job.anc result.html").errors,
            "no/x.log: cannot be written: No such file or directory\n");
}

TEST_F(Merge, GivesItsFilesTheUsualPermissions) {
  write("page.html", "<p>a");
  for (const auto &[mask, mode] : {std::pair("umask 022; ", 0644), {"umask 007; ", 0660}}) {
    run("kextract", "job.kti page.html", mask);
    run("kmerge", "job.kti job.anc result.html", mask);
    for (const char *name : {"job.kti", "job.txt", "job.anc", "job.anx", "result.html"}) {
      const auto status = std::filesystem::status(directory_ + "/" + name);
      EXPECT_EQ(static_cast<int>(status.permissions()), mode) << name << " under " << mask;
      std::filesystem::remove(directory_ + "/" + name);
    }
  }
}

// An abort in the first job closes the log; the second job is logged and written all the same.
TEST_F(Merge, JobsDoNotDisturbEachOther) {
  write("page.html", "<p>a <b>c</b></p>");
  run("kextract", "job.kti page.html");
  write_sentences("cut.kti", coded("{90}0 A"), "GERMAN");
  const Outcome outcome =
      run("kmerge", "-LOG-PATHNAME job.log cut.kti job.anc one.html job.kti job.anc two.html");
  EXPECT_EQ(outcome.errors, "cut.kti:2: a sentence is cut off\n");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(read("one.html"), "(none)");
  EXPECT_EQ(read("two.html"), "<p>a <b>c</b></p>");
  EXPECT_NE(read("job.log").find("Premature end of file.\n"), std::string::npos);
}

}  // namespace
}  // namespace klib::test
