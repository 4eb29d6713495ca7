// The style and the script of the report. The policy of the file names the script by its hash, so a
// change here needs the new one, which the test of the report shows.
#include "programs/report/assets.h"

namespace klib::programs {

const char *const style = R"~(
:root { --bg: #fff; --fg: #1b1b1f; --dim: #667; --line: #dde; --mark: #ffe28a; --note: #fff8e6; --badge: #8a4b00; }
@media (prefers-color-scheme: dark) {
  :root { --bg: #16171c; --fg: #e6e6ea; --dim: #99a; --line: #334; --mark: #6a5200; --note: #262218; --badge: #ffc069; }
}
* { box-sizing: border-box; }
body { margin: 0; background: var(--bg); color: var(--fg); font: 15px/1.5 system-ui, sans-serif; }
header { position: sticky; top: 0; z-index: 2; background: var(--bg); border-bottom: 1px solid var(--line); padding: .6em 1em; }
h1 { font-size: 1.2em; margin: 0; overflow-wrap: anywhere; }
h2 { font-size: 1.05em; margin: 1.5em 0 .5em; overflow-wrap: anywhere; }
header p, header form { margin: .3em 0; }
#counts span { margin-right: 1.2em; }
#help { color: var(--dim); font-size: .85em; }
form label { margin-right: 1.2em; }
button, input { font: inherit; color: inherit; background: var(--bg); border: 1px solid var(--dim); border-radius: .4em; padding: 0 .5em; }
button[aria-pressed=true] { background: var(--mark); }
main { padding: 0 1em 3em; }
ol { list-style: none; margin: 0; padding: 0; }
li { display: grid; grid-template-columns: 7em 1fr 1fr; gap: .2em 1.2em; border-top: 1px solid var(--line); padding: .45em .2em; content-visibility: auto; contain-intrinsic-size: auto 3.5em; scroll-margin-top: 12em; }
li.n { background: var(--note); }
li[hidden] { display: none; }
li:focus { outline: 2px solid var(--dim); outline-offset: -2px; }
.h a { color: var(--dim); text-decoration: none; margin-right: .5em; font-variant-numeric: tabular-nums; }
p.s, p.t { margin: 0; overflow-wrap: anywhere; }
em { display: inline-block; font-style: normal; font-size: .75em; border: 1px solid; color: var(--badge); border-radius: .6em; padding: 0 .5em; margin: 0 .2em .1em 0; }
.pn em { font-size: .85em; }
w.on { background: var(--mark); border-radius: .2em; outline: 1px solid var(--badge); }
w.at { outline: 2px solid var(--fg); }
p b { font-weight: 600; font-size: .78em; vertical-align: .08em; padding: 0 .1em; }
.k0 { color: #c2255c; } .k1 { color: #1971c2; } .k2 { color: #2b8a3e; } .k3 { color: #9c36b5; }
.k4 { color: #b35900; } .k5 { color: #087f8c; } .k6 { color: #5f3dc4; } .k7 { color: #846500; }
@media (prefers-color-scheme: dark) {
  .k0 { color: #ff8fb1; } .k1 { color: #74c0fc; } .k2 { color: #8ce99a; } .k3 { color: #e599f7; }
  .k4 { color: #ffa94d; } .k5 { color: #66d9e8; } .k6 { color: #b197fc; } .k7 { color: #ffe066; }
}
.m { grid-column: 1 / -1; overflow: auto; }
.m table { border-collapse: collapse; font-size: .8em; }
.m th { font-weight: 400; white-space: nowrap; padding: 0 .3em; text-align: right; }
.m thead th { writing-mode: vertical-rl; transform: rotate(180deg); text-align: left; }
.m td { width: 1.3em; height: 1.3em; border: 1px solid var(--line); }
.m td.x { background: var(--badge); }
.v div { display: flex; gap: 1em; }
figure { flex: 1; min-width: 0; margin: .5em 0; }
figcaption { color: var(--dim); }
iframe { width: 100%; height: 70vh; border: 1px solid var(--line); background: #fff; color-scheme: light; }
@media (max-width: 760px) {
  header { position: static; }
  li { grid-template-columns: 1fr; scroll-margin-top: 1em; }
  .v div { flex-direction: column; }
}
@media print { header form, #help, .v { display: none; } header { position: static; } }
)~";

const char *const script = R"~(
"use strict";
const all = [...document.querySelectorAll("li")];
const only = document.getElementById("only"), find = document.getElementById("find");
const kinds = [...document.querySelectorAll("#kinds button")];
let current = null;

// The words of one side of a sentence: a list of the pieces of each.
function words(li, side) {
  const list = [];
  for (const w of li.querySelectorAll("p." + side + " w"))
    if (w.hasAttribute("c") && list.length) list[list.length - 1].push(w);
    else list.push([w]);
  return list;
}
function pairs(li) {
  return (li.dataset.p || "").split(" ").filter(Boolean).map(p => p.split("-").map(Number));
}
function clear() {
  for (const w of document.querySelectorAll("w.on, w.at")) w.classList.remove("on", "at");
}
// Marks a word and its partners.
function mark(li, side, index) {
  clear();
  const s = words(li, "s"), t = words(li, "t");
  const own = side === "s" ? s : t, other = side === "s" ? t : s;
  if (!own[index]) return;
  for (const w of own[index]) w.classList.add("on", "at");
  for (const [i, j] of pairs(li))
    if ((side === "s" ? i : j) === index)
      for (const w of other[side === "s" ? j : i] || []) w.classList.add("on");
}
function place(w) {
  const li = w.closest("li"), side = w.closest("p").className;
  return [li, side, words(li, side).findIndex(pieces => pieces.includes(w))];
}
document.addEventListener("mouseover", e => {
  const w = e.target.closest && e.target.closest("li w");
  if (w) mark(...place(w));
  else if (!document.activeElement || document.activeElement.tagName !== "LI") clear();
});

// The matrix of the alignment, a row for each word of the source.
function matrix(li) {
  const old = li.querySelector(".m");
  if (old) return old.remove();
  const s = words(li, "s"), t = words(li, "t"), set = new Set((li.dataset.p || "").split(" "));
  const box = document.createElement("div");
  box.className = "m";
  const cells = s.length * t.length;
  if (cells === 0 || cells > 40000) {
    box.textContent = cells ? "The sentence is too long for a matrix." : "There is no alignment.";
    return li.append(box);
  }
  const table = box.appendChild(document.createElement("table"));
  const text = pieces => pieces.map(w => w.textContent).join("");
  const add = (row, tag, content) => {
    const cell = row.appendChild(document.createElement(tag));
    if (content) cell.textContent = content;
    return cell;
  };
  const head = table.createTHead().insertRow();
  add(head, "th");
  t.forEach(pieces => add(head, "th", text(pieces)));
  const body = table.createTBody();
  s.forEach((pieces, i) => {
    const row = body.insertRow();
    add(row, "th", text(pieces));
    t.forEach((other, j) => {
      const cell = add(row, "td");
      if (set.has(i + "-" + j)) {
        cell.className = "x";
        cell.title = text(pieces) + " – " + text(other);
      }
    });
  });
  li.append(box);
}

let side = "s", index = -1;
document.addEventListener("keydown", e => {
  const li = document.activeElement;
  if (!li || li.tagName !== "LI" || e.ctrlKey || e.altKey || e.metaKey) return;
  if (li !== current) [current, side, index] = [li, "s", -1];
  const count = words(li, side).length;
  if (e.key === "ArrowRight") index = Math.min(index + 1, count - 1);
  else if (e.key === "ArrowLeft") index = Math.max(index - 1, 0);
  else if (e.key === "ArrowDown" || e.key === "ArrowUp") {
    side = e.key === "ArrowDown" ? "t" : "s";
    index = Math.max(0, Math.min(index, words(li, side).length - 1));
  } else if (e.key === "Enter") matrix(li);
  else if (e.key === "Escape") clear();
  else return;
  e.preventDefault();
  if (e.key.startsWith("Arrow")) mark(li, side, index);
});
document.addEventListener("click", e => {
  const button = e.target.closest && e.target.closest("button.x");
  if (button) matrix(button.closest("li"));
});

// Filters: all of them must hold.
function filter() {
  const wanted = kinds.filter(b => b.getAttribute("aria-pressed") === "true").map(b => b.dataset.b);
  const text = find.value.trim().toLowerCase();
  let shown = 0;
  for (const li of all) {
    const has = [...li.querySelectorAll("em")].map(em => em.dataset.b);
    const hit = (!only.checked || has.length > 0) &&
      (wanted.length === 0 || has.some(b => wanted.includes(b))) &&
      (text === "" || plain(li).includes(text));
    li.hidden = !hit;
    shown += hit ? 1 : 0;
  }
  document.getElementById("shown").value = shown === all.length ? "" : shown + " shown";
}
const texts = new Map();
function plain(li) {
  if (!texts.has(li)) {
    const line = s => words(li, s).map(p => p.map(w => w.textContent).join("")).join(" ");
    texts.set(li, (line("s") + "\n" + line("t")).toLowerCase());
  }
  return texts.get(li);
}
only.addEventListener("change", filter);
find.addEventListener("input", filter);
document.forms[0].addEventListener("submit", e => e.preventDefault());
for (const b of kinds)
  b.addEventListener("click", () => {
    b.setAttribute("aria-pressed", b.getAttribute("aria-pressed") === "true" ? "false" : "true");
    filter();
  });
for (const li of all) {
  li.tabIndex = 0;
  if (!li.dataset.p) continue;
  const button = document.createElement("button");
  button.type = "button";
  button.className = "x";
  button.textContent = "⊞";
  button.title = "the matrix of the alignment";
  button.tabIndex = -1;
  li.querySelector(".h").append(button);
}
)~";

const char *const script_hash = "cAk14ZXucgpBNX71gle8UAg5wyzRaeYPw6k9Mxq30y0=";

}  // namespace klib::programs
