// Pages in every encoding: what they are read as, and that they come back as they were.
#include "workplace.h"

namespace klib::test {
namespace {

class Encodings : public Workplace {
 protected:
  // The text of the page's sentences, or the message of its refusal. `merged` is the page that
  // comes of them when nothing is translated.
  std::string extract(const std::string &page, std::string &merged) {
    write("page.html", page);
    const Outcome outcome = run("kextract", "-LANGUAGE ENGLISH job.kti page.html");
    if (outcome.status != 0) return outcome.errors;
    const Outcome back = run("kmerge", "-LANGUAGE ENGLISH job.kti job.anc result.html");
    merged = back.status == 0 ? read("result.html") : back.errors;
    return read("job.txt");
  }
};

TEST_F(Encodings, AreThoseOfTheLabelsAndComeBack) {
  static const struct {
    const char *head, *bytes, *text;
  } rows[] = {
      {"<meta charset=latin1>", "\x93\xE9\x80\x94\x81", "“é€”\xC2\x81"},
      {"<meta charset=' ISO_8859-1:1987\t'>", "\x96", "–"},
      {"<meta http-equiv=content-type content='text/html; charset=us-ascii'>", "\xE9", "é"},
      {"<meta charset=utf-16>", "é", "é"},
      {"<meta charset=x-user-defined>", "\xE9", "é"},
      {"<meta charset=l2>", "\xB1", "ą"},
      {"<meta charset=koi8-ru>", "\xAE\xBE\xA4", "ўЎє"},
      {"<meta charset=mac>", "\xC6\xDB", "∆€"},
      {"<meta charset=x-mac-ukrainian>", "\xFF\xB6", "€ґ"},
      {"<meta charset=dos-874>", "\xA1\x80", "ก€"},
      {"<meta charset=windows-1255>", "\xE0\xC7\xCA", "\u05D0\u05B7\u05BA"},
      {"<meta charset=windows-1258>", "a\xEC", "a\u0301"},
      {"<meta charset=gb2312>", "\xC4\xE3\x81\x30\x81\x30", "你\xC2\x80"},
      {"<meta charset=big5>", "\xA7\x41\xA1\x45", "你‧"},
      {"<meta charset=big5>", "\x87\x40", "\u43F0"},  // one of Hong Kong's
      {"<meta charset=x-euc-jp>", "\xAD\xA1\xA1\xC1", "①～"},
      {"<meta charset=iso-2022-jp>", "\x1B$B$\"\x1B(B", "あ"},
      {"<meta charset=sjis>", "\x82\xA0\x87\x40", "あ①"},
      {"<meta charset=ks_c_5601-1989>", "\xB0\xA1\x81\x41", "가갂"},
      {"<?xml version='1.0' encoding='iso-8859-15'?>", "\xA4", "€"},
      {"<?xml version='1.0' encoding='koi8-r'?><meta charset=utf-8>", "é", "é"},
  };
  for (const auto &row : rows) {
    const std::string page = std::string(row.head) + "<p>" + row.bytes + " x</p>";
    std::string merged;
    EXPECT_EQ(extract(page, merged), std::string(row.text) + " x\n") << row.head;
    EXPECT_EQ(shown(merged), shown(page)) << row.head;
  }
}

TEST_F(Encodings, ThatAreNoneOrDoNotFitAreRefused) {
  static const struct {
    const char *page, *message;
  } rows[] = {
      {"<meta charset=UCS-4>", "1: unknown encoding 'UCS-4'"},
      {"<meta charset=wchar_t>", "1: unknown encoding 'wchar_t'"},
      {"\n<meta charset=iso646-gb>", "2: unknown encoding 'iso646-gb'"},
      {"<meta charset='latin1//translit'>", "1: unknown encoding 'latin1//translit'"},
      {"<meta charset=hz-gb-2312>",
       "1: the encoding 'hz-gb-2312' is not safe to read, in a browser either: convert the page"},
      {"<meta charset=euc-jp>\n\n\xFF", "3: is not valid EUC-JP"},
      {"<meta charset=iso-2022-jp>\x1B(I1", "1: is not valid ISO-2022-JP"},
      {"<meta charset=shift_jis>\n\xEE\xF9",
       "2: would not come back from UTF-8 as it is in Shift_JIS: convert it first"},
      {"\n\xE9",
       "2: is not valid UTF-8, which was assumed: the page does not say what it is, but "
       "--encoding NAME can"},
      {"\xFF\xFE\x41", "1: is not valid UTF-16LE"},
      {"\xFF\xFE\x41\xD8\x41", "1: is not valid UTF-16LE"},
  };
  for (const auto &row : rows) {
    std::string merged;
    EXPECT_EQ(extract(row.page, merged), std::string("page.html:") + row.message + "\n");
  }
}

TEST_F(Encodings, InvisibleCharactersAreWrittenAsThePageHasThem) {
  static const struct {
    const char *page, *merged, *translated;  // the second sentence has "x", which becomes A0 and AD
  } rows[] = {
      {"<p>a&nbsp;b<p>x", "<p>a&nbsp;b<p>x", "<p>a&nbsp;b<p>&nbsp;\xC2\xAD"},
      {"<p>a\xC2\xA0"
       "b&#160;c&nbsp;d<p>x",
       "<p>a\xC2\xA0"
       "b&#160;c&nbsp;d<p>x",
       "<p>a\xC2\xA0"
       "b&#160;c&nbsp;d<p>&nbsp;\xC2\xAD"},
      {"<p>a\xC2\xA0"
       "b<p>x<p>&shy;c",
       "<p>a\xC2\xA0"
       "b<p>x<p>&shy;c",
       "<p>a\xC2\xA0"
       "b<p>\xC2\xA0&shy;<p>&shy;c"},
      {"<p>a&zwj;b&#x2003;c&lrm;<p>x", "<p>a&zwj;b&#x2003;c&lrm;<p>x",
       "<p>a&zwj;b&#x2003;c&lrm;<p>\xC2\xA0\xC2\xAD"},
  };
  for (const auto &row : rows) {
    const std::string meta = "<meta charset=utf-8>";
    std::string merged;
    extract(meta + row.page, merged);
    EXPECT_EQ(merged, meta + row.merged);
    std::string kti = read("job.kti");
    kti.replace(kti.find("1 x") + 2, 1, coded("{9D}00A0{AD}"));
    write("out.kti", kti);
    run("kmerge", "-LANGUAGE ENGLISH out.kti job.anc result.html");
    EXPECT_EQ(read("result.html"), meta + row.translated);
  }
}

TEST_F(Encodings, CharactersThatAPageLacksBecomeReferences) {
  static const struct {
    const char *page, *result;
  } rows[] = {
      {"<p>a", "<p>&#233;&#8364;&#128512;"},
      {"<meta charset=latin1><p>a", "<meta charset=latin1><p>\xE9\x80&#128512;"},
      {"<meta charset=iso-2022-jp><p>a", "<meta charset=iso-2022-jp><p>&#233;&#8364;&#128512;"},
      {"<meta charset=utf-8><p>a", "<meta charset=utf-8><p>é€\U0001F600"},
  };
  for (const auto &row : rows) {
    std::string merged;
    extract(row.page, merged);
    const std::string kti = read("job.kti");
    write("out.kti", kti.substr(0, kti.find(" a")) + coded(" {E9}{9D}20AC{9D}D83D{9D}DE00{91}"));
    EXPECT_EQ(run("kmerge", "-LANGUAGE ENGLISH out.kti job.anc result.html").errors, "");
    EXPECT_EQ(shown(read("result.html")), shown(row.result)) << row.page;
  }
  // An anchor file that names none of the encodings.
  write("job.anc", "klib-page 2 " + read("job.anc").substr(12, 16) + " ENGLISH html UCS-4\n=<p>");
  write("job.anx", std::string("\x30\0\0\0\x34\0\0\0", 8));
  EXPECT_EQ(run("kmerge", "-LANGUAGE ENGLISH out.kti job.anc result.html").errors,
            "job.anc:1: unknown encoding 'UCS-4'\n");
}

}  // namespace
}  // namespace klib::test
