#!/usr/bin/env python3
"""What became of the markup of pages in their translations.

compare_markup.py SOURCE RESULT [SOURCE RESULT]... prints a line of figures in the order of ROWS,
summed over the pages, each with its base. compare_markup.py --rows prints their names. With
--show, every difference is shown on standard error.

Tags are compared by their names and attributes; the values of attributes that hold text for people
may differ, and the language that a page declares. White space and references to characters do not
count.
"""

import collections
import html
import re
import sys

ROWS = [
    "pages", "tags", "tags lost", "tags added", "tags inside words", "elements emptied",
    "protected texts", "protected texts changed", "pre elements changed", "tags crossed",
]
TOKEN = re.compile(
    r"<!--.*?-->|<!\[CDATA\[.*?\]\]>|<(script|style)\b[^>]*>.*?</\1\s*>"
    r"|</?[a-zA-Z](?:[^>\"']|\"[^\"]*\"|'[^']*')*>|<[!?][^>]*>", re.S | re.I)
ATTRIBUTE = re.compile(r"([^\s=/>\"']+)(?:\s*=\s*(\"[^\"]*\"|'[^']*'|[^\s>]+))?")
FOR_PEOPLE = {"alt", "aria-label", "title", "placeholder", "label", "summary", "content",
              "value"}
VOID = {"area", "base", "br", "col", "embed", "hr", "img", "input", "link", "meta", "param",
        "source", "track", "wbr"}
OPTIONAL = {"p", "li", "dt", "dd", "tr", "td", "th", "thead", "tbody", "tfoot", "option",
            "colgroup", "html", "head", "body"}
PROTECTED = {"code", "kbd", "samp", "tt"}


def normal(text):
    return re.sub(r"\s+", " ", html.unescape(text)).strip()


class Page:
    def __init__(self, name):
        with open(name, encoding="utf-8", errors="replace") as file:
            text = file.read()
        self.tags = collections.Counter()
        self.inside = 0
        self.emptied = self.crossed = 0
        self.texts = collections.Counter()
        self.pre = collections.Counter()
        self.stack = []  # [name, content]
        before, position = "", 0
        for token in TOKEN.finditer(text):
            plain = text[position:token.start()]
            self.add_text(plain)
            before = plain[-1:] if plain else before
            tag = token.group()
            position = token.end()
            if tag[1] == "!" or tag[1] == "?" or token.group(1):
                continue
            self.add_tag(tag)
            # Inside a word: letters or digits on both sides, with nothing but tags between.
            end = position
            while following := TOKEN.match(text, end):
                end = following.end()
            if plain and before.isalnum() and text[end:end + 1].isalnum() and self.is_inline(tag):
                self.inside += 1
        self.add_text(text[position:])

    @staticmethod
    def name(tag):
        return re.match(r"</?([^\s/>]+)", tag).group(1).lower()

    def is_inline(self, tag):
        return self.name(tag) in {"a", "b", "strong", "i", "em", "cite", "dfn", "var", "code", "kbd",
                                  "samp", "tt", "u", "s", "span", "sub", "sup", "small", "big",
                                  "font", "abbr", "acronym", "q", "ins", "del"}

    def add_text(self, text):
        for element in self.stack:
            element[1].append(text)

    def add_tag(self, tag):
        name = self.name(tag)
        parts = [name]
        for match in ATTRIBUTE.finditer(re.sub(r"^</?[^\s/>]+", "", tag).rstrip(">")):
            key = match.group(1).lower()
            value = normal((match.group(2) or "").strip("\"'"))
            is_language = key in {"lang", "xml:lang"} and value[:2] in {"en", "es"}
            is_free = key in FOR_PEOPLE or name == "html" and key == "lang" or is_language
            parts.append(key + "=" + ("" if is_free else value))
        self.tags[("/" if tag[1] == "/" else "") + " ".join(parts)] += 1
        if tag[1] != "/":
            if name not in VOID and not tag.endswith("/>"):
                self.stack.append([name, []])
            return
        for place in range(len(self.stack) - 1, -1, -1):
            if self.stack[place][0] == name:
                break
        else:
            self.crossed += 1
            return
        for element in self.stack[place + 1:]:
            self.crossed += element[0] not in OPTIONAL
        self.end(self.stack[place])
        del self.stack[place:]

    def end(self, element):
        name, content = element
        text = normal("".join(content))
        if not text and self.is_inline("<" + name):
            self.emptied += 1
        if name in PROTECTED:
            self.texts[text] += 1
        if name == "pre":
            self.pre[html.unescape("".join(content))] += 1


def compare(source_name, result_name, show):
    source, result = Page(source_name), Page(result_name)
    lost, added = source.tags - result.tags, result.tags - source.tags
    changed, pre = source.texts - result.texts, source.pre - result.pre
    if show:
        for what, counter in (("lost", lost), ("added", added), ("changed", changed), ("pre", pre)):
            for item, count in counter.items():
                print(f"{result_name}: {what}: {count} x {item[:200]}", file=sys.stderr)
    return [1, sum(source.tags.values()), lost.total(), added.total(),
            max(0, result.inside - source.inside), max(0, result.emptied - source.emptied),
            source.texts.total(), changed.total(), pre.total(),
            max(0, result.crossed - source.crossed)]


def main():
    arguments = sys.argv[1:]
    if arguments == ["--rows"]:
        return print("\n".join(ROWS))
    show = arguments[:1] == ["--show"]
    names = arguments[1:] if show else arguments
    sums = [0] * len(ROWS)
    for source, result in zip(names[::2], names[1::2]):
        sums = [a + b for a, b in zip(sums, compare(source, result, show))]
    print("\n".join(map(str, sums)))


main()
