// The parts of a page that come back as they are, whatever the translation has for them.
#include <sys/resource.h>

#include "workplace.h"

namespace klib::test {
namespace {

class Keep : public Workplace {
 protected:
  // The sentences of an English page with this body.
  std::string offered(const std::string &body, const std::string &options = "") const {
    return Workplace::offered("<html lang=en><meta charset=utf-8>" + body, options);
  }

  // The body after a translation of its one sentence.
  std::string translated(const std::string &body, const std::string &translation,
                         const std::string &alignment) const {
    offered(body);
    write("t.txt", translation + "\n");
    write("a.txt", alignment + "\n");
    run("kcarry", "-LANGUAGE ENGLISH -TARGET-LANGUAGE GERMAN job.kti t.txt a.txt out.kti");
    run("kmerge", "-LANGUAGE GERMAN out.kti job.anc result.htm");
    const std::string page = read("result.htm");
    return page.substr(std::min(page.find("utf-8>"), page.size() - 6) + 6);
  }
};

TEST_F(Keep, BlocksAreNotOffered) {
  static const struct {
    const char *body, *text;
  } rows[] = {
      {"<div translate=no><p>a<p>b</div><p>c", "c/"},
      {"<div translate=no>a<p translate=yes>b</div>c", "b/c/"},
      {"<p class='x notranslate y'>a</p>b<p class=donotranslate>c", "b/c/"},
      {"<ul><li translate=no>a<li>b</ul><table><tr><td translate=no>c<td>d</table>", "b/d/"},
      {"<div><p translate=no>a</div>b<p translate=no>c<p>d<p translate=NO>e<h1>f</h1>", "b/d/f/"},
      {"<p lang=fr>a<p lang=en-GB>b<p xml:lang=de-AT>c <span lang=EN>d</span><p lang>e",
       "b/c d/e/"},
      {"<p><code>a</code> <kbd>b</kbd>, <samp>c</samp>.<p><tt>d</tt> e", "d e/"},
      {"<title translate=no>a</title><p>b <i>c</b></p><p translate=no>d</b></i>e<p>f", "b c/f/"},
      {"<p>a <span translate=no>B. C</span> d. E", "a B. C d./E/"},
  };
  for (const auto &row : rows) EXPECT_EQ(offered(row.body), row.text) << row.body;
  EXPECT_EQ(offered("<p><code>a</code><p translate=no><code>b</code>", "--translate-code"), "a/");
}

TEST_F(Keep, AtomsHaveAWordOfTheirOwn) {
  const char *const body =
      "<p>you have<?php n() ?>mails, {{ name }} (<img src=a alt=b>), "
      "<math><mi>x</mi></math>.<br><img>";
  EXPECT_EQ(offered(body), "you havemails, {{ name }} (), ./b/");
  EXPECT_EQ(offered(body, "--placeable XQ#"), "you have XQ1 mails, XQ2 (XQ3), XQ4./b/");
  write("t.txt", "XQ4: XQ2, du hast XQ1 Mails\nB\n");
  write("a.txt", "0-2 1-3 2-4 3-5 4-1 6-0\n\n");
  run("kcarry", "-LANGUAGE ENGLISH -TARGET-LANGUAGE GERMAN job.kti t.txt a.txt out.kti");
  EXPECT_EQ(run("kmerge", "-LANGUAGE GERMAN out.kti job.anc result.htm").errors, "");
  const std::string page = read("result.htm");
  EXPECT_NE(page.find("<math><mi>x</mi></math>: {{ name }}"), page.npos) << page;
  EXPECT_NE(page.find("du hast <?php n() ?> Mails"), page.npos) << page;
  EXPECT_NE(page.find("<img src=a alt=B>"), page.npos) << page;
}

TEST_F(Keep, WhatIsKeptWholeIsOfferedOnDemand) {
  static const struct {
    const char *offer, *body, *text;
  } rows[] = {
      {"textarea", "a<textarea>\n b c\n\n d  &lt;e</textarea>f<pre>g</pre>", "a/b c/d/<e/f/"},
      {"pre", "<pre>a <b>b</b>\n  c\td. E</pre>f<textarea>g</textarea>", "a b/c/d./E/f/"},
      {"svg", "a<svg><title>b</title><text>c <tspan>d</tspan></text><text>e</text></svg>f",
       "a/b/c d/e/f/"},
      {"pre,svg", "<pre>a</pre><svg><g/><desc>b</desc></svg><textarea>c</textarea>", "a/b/"},
  };
  for (const auto &row : rows)
    EXPECT_EQ(offered(row.body, std::string("--offer ") + row.offer), row.text) << row.body;
  EXPECT_EQ(run("kextract", "--offer pre,div job.kti job.htm").errors,
            "kextract: --offer: 'div' is none of textarea, pre and svg\n");
}

TEST_F(Keep, PiecesOfSentencesComeBack) {
  static const struct {
    const char *body, *translation, *alignment, *result;
  } rows[] = {
      {"use <code>apt-get x</code>, now", "jetzt apto-coger y nutzen,", "0-3 1-1 2-2 3-0",
       "jetzt <code>apt-get x</code> nutzen,"},
      // Words of others between come after the block, words of the piece elsewhere go.
      {"a <code>b c d</code> e", "A B E C D F", "0-0 1-1 2-3 3-4 4-2", "A E <code>b c d</code> F"},
      // With markup, they stay.
      {"a <code>b c d</code> <i>e</i> f", "A B E C D F", "0-0 1-1 2-3 3-4 4-2 5-5",
       "A <i>E</i> <code>b c d</code> F"},
      {"a <code>b c</code> d", "A B D, C.", "0-0 1-1 2-3 3-2", "A <code>b c</code> D,."},
      // Nothing is aligned with it.
      {"a <i><kbd>b</kbd></i> d", "A D", "0-0 2-1", "A <i><kbd>b</kbd></i> D"},
      {"<a href=x>see <code>b</code></a> d", "Siehe D", "0-0 2-1",
       "<a href=x>Siehe <code>b</code></a> D"},
      {"<b translate=no>x</b> a", "A", "1-0", "<b translate=no>x</b> A"},
      {"a <code>b</code>", "", "", "<code>b</code>"},
      // The same text, wherever the alignment points; and with another inside.
      {"the <code>ls</code> and <code>cd</code>", "cd und ls", "0-0 1-0 2-1 3-2",
       "<code>cd</code> und <code>ls</code>"},
      {"in <span lang=fr>un <b>petit</b> <!-- x --> chien</span> it", "es kleiner Hund in",
       "0-3 1-1 2-1 3-2 4-0", "es <span lang=fr>un <b>petit</b> <!-- x --> chien</span> in"},
      {"a (<tt>b</tt>), c", "A (B), C", "0-0 1-1 2-2", "A (<tt>b</tt>), C"},
      {"a <tt>b</tt>/<tt>c</tt> d", "A E/F D", "0-0 1-1 2-2", "A <tt>b</tt>/<tt>c</tt> D"},
      // Left as it is, with a piece inside of a word.
      {"un<code>xz</code>, <i>b </i>; <tt>c</tt>", "unxz, b ; c", "0-2",
       "un<code>xz</code>, <i>b </i>; <tt>c</tt>"},
      // Elements of blanks are no words, and those of words keep some.
      {"<i>int</i><u> </u><b>x</b> is<s> <img></s>y", "Y IST X INT", "0-3 1-2 2-1 3-0",
       "Y IST<s> <img> </s><b>X</b> <i>INT</i><u> </u>"},
      {"see <a href=x>\"the page\"</a>.", "PAGE\". \"THE SEE", "0-2 1-1 2-0",
       "<a href=x>PAGE\".</a> \"THE SEE"},
      {"a <code>-17</code> (<em>17</em> d", "D (B -17 A", "0-3 1-2 2-1 3-0",
       "D (B <em><code>-17</code></em> A"},
      {"a <code>x &lt; &amp;y</code> d", "A D x", "0-0 1-2 2-2 3-2 4-1",
       "A D <code>x &lt; &amp;y</code>"},
  };
  for (const auto &row : rows)
    EXPECT_EQ(translated(row.body, row.translation, row.alignment), row.result) << row.body;
}

TEST_F(Keep, ManyPiecesStayLinear) {
  const auto seconds_of = [this](int pieces) {
    std::string page = "<p>", translation, alignment;
    for (int i = 0; i < pieces; i++) {
      const std::string number = std::to_string(i);
      page += "<code>k" + number + " x</code> <b>-" + number + "</b> ";
      translation += "x k" + number + " y ";
      for (int w = 3 * i; w < 3 * i + 3; w++)
        alignment += std::to_string(w) + "-" + std::to_string(w) + " ";
    }
    write("job.htm", page + ".");
    write("t.txt", translation + "\n");
    write("a.txt", alignment + "\n");
    EXPECT_EQ(run("kextract", "-LANGUAGE ENGLISH job.kti job.htm").status, 0);
    rusage before, after;
    getrusage(RUSAGE_CHILDREN, &before);
    EXPECT_EQ(run("kcarry", "-TARGET-LANGUAGE GERMAN job.kti t.txt a.txt out.kti").status, 0);
    getrusage(RUSAGE_CHILDREN, &after);
    return static_cast<double>(after.ru_utime.tv_sec - before.ru_utime.tv_sec) +
           1e-6 * static_cast<double>(after.ru_utime.tv_usec - before.ru_utime.tv_usec);
  };
  EXPECT_LT(seconds_of(40'000), 10 * seconds_of(10'000) + 0.1);
}

}  // namespace
}  // namespace klib::test
