// Texts in attributes, and what names the language of a page.
#include <algorithm>

#include "workplace.h"

namespace klib::test {
namespace {

class Attributes : public Workplace {
 protected:
  // The page with these translations of its sentences.
  std::string translated(const std::string &page, const std::string &translation,
                         const std::string &language) const {
    const std::string text = offered(page);
    write("t.txt", translation);
    write("a.txt",
          std::string(static_cast<size_t>(std::count(text.begin(), text.end(), '/')), '\n'));
    run("kcarry",
        "-LANGUAGE ENGLISH -TARGET-LANGUAGE " + language + " job.kti t.txt a.txt out.kti");
    EXPECT_EQ(run("kmerge", "-LANGUAGE " + language + " out.kti job.anc result.htm").errors, "");
    return read("result.htm");
  }
};

TEST_F(Attributes, TextsAreOfferedOnceEach) {
  static const struct {
    const char *page, *text;
  } rows[] = {
      {"<p>a <img alt='b. C'> d. E<p>f", "a d./b. C/E/f/"},
      {"<p><a title=b>c</a> <br><i title=b>d</i><p title='&#98;'>e", "c/b/d/e/"},
      {"<link title=a><style title=b></style><p title=\"c\n d \">e<p title=''>f<p title=' "
       "\xC2\xB6'>",
       "c d/e/f/"},
      {"<input type=SUBMIT value=a><input value=b><input type=reset value=c placeholder=d>",
       "a/c/d/"},
      {"<meta name=Keywords content='a, b'><meta name=viewport content=c>"
       "<meta property=og:title content=d><meta name=twitter:title content=e>",
       "a, b/d/e/"},
      {"<p title='&#10;a&#x9; b'>c", "a b/c/"},
      {"<table summary=a><tr><th abbr=b>c<td abbr=d>e</table><div summary=f label=g>h",
       "a/b/c/e/h/"},
      {"<select><optgroup label=a><option label=b>c</select><track label=d><p label=e>",
       "a/b/c/d/"},
      {"<p aria-label=a aria-description=b aria-label=c aria-labelledby=d>e", "a/b/e/"},
      {"<p title=a translate=no>b</p><div lang=fr><img alt=c></div><code title=d>e</code> f",
       "e f/"},
      {"<pre>a <a title=b>c</a></pre><svg title=d><a title=e></svg><!--<p title=f>-->", "b/d/"},
  };
  for (const auto &row : rows) EXPECT_EQ(offered(row.page), row.text) << row.page;
}

TEST_F(Attributes, TranslationsComeBackInTheirQuotes) {
  static const struct {
    const char *page, *translation, *result;
  } rows[] = {
      {"<p title=\"a\">b", "x \"y\" 'z' & <\nB\n", "<p title=\"x &quot;y&quot; 'z' &amp; &lt;\">B"},
      {"<p title='a'>b", "x \"y\" 'z' >\nB\n", "<p title='x \"y\" &#39;z&#39; >'>B"},
      {"<p title=a>b", "x\nB\n", "<p title=x>B"},
      {"<p title = a>b", "x y\nB\n", "<p title = \"x y\">B"},
      {"<p title=a>b", "\xC3\xA9=\nB\n", "<p title=\"&#233;=\">B"},
      {"<p title='a&#10;&#x9; b'>c", "x y\nB\n", "<p title='x y'>B"},
      {"<p title='a&#10;b'>c", "a b\nB\n", "<p title='a&#10;b'>B"},
      {"<p title='a\n b'>b<p title=\"a b\">", "\nB\n", "<p title='a\n b'>B<p title=\"a b\">"},
      {"<p>a <img alt=b> c", "A C\nB\n", "<p>A <img alt=B> C"},
  };
  for (const auto &row : rows)
    EXPECT_EQ(translated(row.page, row.translation, "GERMAN"), row.result) << row.page;
}

TEST_F(Attributes, LanguageAndDirectionFollowTheTranslation) {
  static const struct {
    const char *language, *page, *result;
  } rows[] = {
      {"JAPANESE", "<html lang=\"en\" xml:lang='en-US'><p>b<p lang=fr>c<p lang=EN dir=ltr>d",
       "<html lang=\"ja\" xml:lang='ja'><p>X<p lang=fr>c<p lang=ja dir=ltr>Y"},
      {"ARABIC", "<html lang=en><body dir=LTR><p dir=ltr>b<p lang=en dir=ltr>c",
       "<html dir=\"rtl\" lang=ar><body dir=rtl><p dir=ltr>X<p lang=ar dir=rtl>Y"},
      {"cs", "<html dir=rtl lang=en-GB><p>b<p>c", "<html dir=rtl lang=cs><p>X<p>Y"},
      {"ENGLISH", "<html lang=en-GB><p>b<p>c", "<html lang=en-GB><p>X<p>Y"},
  };
  for (const auto &row : rows)
    EXPECT_EQ(translated(row.page, "X\nY\n", row.language), row.result) << row.page;
}

}  // namespace
}  // namespace klib::test
