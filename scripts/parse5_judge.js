// What check_parse5 runs: parse5_judge.js BUILD WORK COUNT PAGE...
'use strict';
const fs = require('fs'), path = require('path'), {spawnSync} = require('child_process');
const parse5 = require('parse5');
const [build, work, count, ...pages] = process.argv.slice(2);
const batch = 100, largest = 30000;
let faults = 0;

function fault(name, what) {
  if (++faults <= 20) console.error(`${name}: ${what}`);
  if (faults === 1) fs.copyFileSync(name, '/tmp/parse5-fault.html');
}

// The tokens that parse5's tokenizer makes by itself, outside of svg and math: what follows a start
// tag is taken for text by the tag alone, whatever elements are around it.
function tokens(bytes) {
  const source = bytes.toString('latin1'), lines = [];
  let outer = '', depth = 0;  // an svg or math, and how many of its name are open
  let point = '', mixed = false;  // an element of a drawing that may hold HTML; whether any does
  const tokenizer = new parse5.Tokenizer({sourceCodeLocationInfo: true}, {
    onStartTag(token) {
      if (depth > 0) {
        mixed ||= point !== '' || endsDrawing.test(token.tagName);
        if (mayHoldHtml.test(token.tagName)) point = token.tagName;
        if (token.tagName === outer && !token.selfClosing) depth++;
        return;
      }
      record('S', token, token.tagName);
      if (/^(svg|math)$/.test(token.tagName)) {
        if (!token.selfClosing) [outer, depth] = [token.tagName, 1];
      } else if (token.tagName in textModes) {
        tokenizer.state = textModes[token.tagName];
      }
      tokenizer.inForeignNode = depth > 0;
    },
    onEndTag(token) {
      if (token.tagName === point) point = '';
      mixed ||= depth > 0 && /^(p|br)$/.test(token.tagName);
      if (depth > 0 && (token.tagName !== outer || --depth > 0)) return;
      tokenizer.inForeignNode = false;
      record('E', token, token.tagName);
    },
    onComment(token) { if (depth === 0) record('O', token, ''); },
    onDoctype(token) { if (depth === 0) record('O', token, ''); },
    onCharacter() {}, onNullCharacter() {}, onWhitespaceCharacter() {}, onEof() {},
  });
  function record(kind, token, name) {
    const at = token.location;
    let line = `${kind} ${at.startOffset} ${at.endOffset} ${name}`;
    for (const {name: attribute} of kind === 'S' ? token.attrs : []) {
      const place = at.attrs[attribute];
      const raw = source.slice(place.startOffset, place.endOffset);
      const end = /^.[^=]*=\s*\S/.test(raw) ? place.endOffset : 0;
      // parse5 does not say where a value ends that another attribute follows at once.
      line += ` ${attribute}=${end === 0 ? '*' : end}`;
    }
    lines.push(line);
  }
  tokenizer.write(source, true);
  return {lines, mixed};
}

const mayHoldHtml = /^(title|desc|foreignobject|mi|mo|mn|ms|mtext|annotation-xml)$/;
const endsDrawing = new RegExp('^(b|big|blockquote|body|br|center|code|dd|div|dl|dt|em|embed|font|h[1-6]|head|hr' +
  '|i|img|li|listing|menu|meta|nobr|ol|p|pre|ruby|s|small|span|strong|strike|sub|sup|table|tt|u|ul|var)$');
const {RCDATA, RAWTEXT, SCRIPT_DATA, PLAINTEXT} = parse5.TokenizerMode;
const textModes = {
  title: RCDATA, textarea: RCDATA, script: SCRIPT_DATA, plaintext: PLAINTEXT, style: RAWTEXT,
  xmp: RAWTEXT, iframe: RAWTEXT, noembed: RAWTEXT, noframes: RAWTEXT,
};

const changed = /^(lang|xml:lang|dir|title|alt|placeholder|aria-label|aria-description|summary|label|abbr|value|content)$/;

function same(ours, theirs) {
  const one = ours?.trimEnd().split(' '), other = theirs?.trimEnd().split(' ');
  return one && other && one.length === other.length &&
         one.every((word, i) => word === other[i] || other[i] === word.replace(/=[0-9]+$/, '=*'));
}

// A tree as text, runs of white space as one blank.
function tree(node, lines = []) {
  for (const child of node.childNodes ?? []) {
    if (child.nodeName === '#text')
      lines.push(JSON.stringify(child.value.replace(/[ \t\n\f\r]+/g, ' ')));
    else if (child.nodeName === '#comment')
      lines.push('!' + JSON.stringify(child.data));
    else
      lines.push(child.nodeName + JSON.stringify(child.attrs ?? []));
    tree(child.content ?? child, lines);
    lines.push('.');
  }
  return lines;
}

// Elements that begin and end paragraphs, and so keep their order.
const blocks = new Set(['address', 'article', 'aside', 'blockquote', 'br', 'button', 'caption',
  'center', 'col', 'colgroup', 'dd', 'details', 'dialog', 'dir', 'div', 'dl', 'dt', 'fieldset', 'figcaption',
  'figure', 'footer', 'form', 'frame', 'frameset', 'h1', 'h2', 'h3', 'h4', 'h5', 'h6', 'header', 'hgroup',
  'hr', 'label', 'legend', 'li', 'listing', 'main', 'menu', 'nav', 'ol', 'optgroup', 'option', 'p', 'pre',
  'search', 'section', 'select', 'summary', 'table', 'tbody', 'td', 'template', 'tfoot', 'th', 'thead', 'title',
  'tr', 'ul']);

// What a translation leaves of a tree: its blocks in their order, and the other elements, in any
// order, with the blocks that they are in; without attributes that may change. An element that
// crosses others, and so is in the tree several times, counts once, and then it depends on the order
// of the words what is in which block.
const implied = /^(html|head|body|p|tbody|tr|colgroup)$/;
function elements(root) {
  const list = [], seen = new Set();
  let count = 0, crossed = false;
  (function take(node, block) {
    for (const child of node.childNodes ?? []) {
      const at = child.sourceCodeLocation?.startOffset;
      let inside = block;
      if (child.attrs && (at === undefined ? !implied.test(child.nodeName) : seen.has(at))) {
        crossed = true;
      } else if (child.attrs) {
        seen.add(at);
        const name = child.nodeName;
        if (blocks.has(name)) inside = `${++count} ${name}`;
        const rest = child.attrs.filter(({name}) => !changed.test(name));
        list.push({around: inside === block ? block : `${block} < ${inside}`, shown: name + JSON.stringify(rest)});
      }
      take(child.content ?? child, inside);
    }
  })(root, '');
  return {crossed, of: places => list.map(({around, shown}) => (places ? around + ' > ' : '') + shown).sort()};
}

function parse(name) {
  return parse5.parse(fs.readFileSync(name, 'utf8'), {scriptingEnabled: false, sourceCodeLocationInfo: true});
}

let seed = 1;
function random(n) {  // the same on every run
  seed = (Math.imul(seed, 1103515245) + 12345) >>> 0;
  return (seed >>> 8) % n;
}

const pieces = ['<b>', '</b>', '<p>', '</p>', '<a href=x title="y z">', '</a>', '<!--', '-->', '"', '\'',
  '<', '>', '&', '&amp;', '=', '/', ' ', '<i class=a CLASS=b>', '</i >', '<br/>', '<script>', '</script>',
  '<textarea>', '</textarea>', '<title>', '</title>', '<code>', '</code>', '<ul><li>', '</ul>', '<!x', '<?y',
  '</ ', '<img alt=\'q\' src>', '<td>', '<div translate=no>', '</div>', '<style>', '</style>', '<em', '</em'];

function mutated(text) {
  for (let n = 1 + random(6); n > 0; n--) {
    const at = random(text.length + 1);
    if (random(3) === 0)
      text = text.slice(0, at) + text.slice(at + 1 + random(20));
    else
      text = text.slice(0, at) + pieces[random(pieces.length)] + text.slice(at);
  }
  return text;
}

function run(program, args) {
  const result = spawnSync(path.join(build, 'bin', program), args, {encoding: 'utf8', maxBuffer: 1 << 28});
  return result.stderr + (result.error ?? '');
}

// Another order of the words of a line, and its alignment.
function reversed(line) {
  const words = line.split(' ').filter(word => word);
  return [words.map(word => word.toUpperCase()).reverse().join(' '),
          words.map((_, i) => `${i}-${words.length - 1 - i}`).join(' ')];
}

function judge(names) {
  const listed = spawnSync(path.join(build, 'tests/programs/list_tokens'), names,
                           {encoding: 'latin1', maxBuffer: 1 << 28}).stdout.split('\nP ');
  names.forEach((name, i) => {
    const bytes = fs.readFileSync(name), text = bytes.toString('latin1');
    // The standard makes no token of "</>", nor of a tag that the end of the page cuts.
    const counts = line => {
      const [kind, begin, end] = line.split(' ');
      return kind !== 'T' && (kind !== 'O' || (!text.startsWith('</>', +begin) && +end < bytes.length));
    };
    const ours = listed[i].split('\n').slice(1).filter(line => line && counts(line));
    const theirs = tokens(bytes).lines.filter(counts);
    for (let k = 0; k < Math.max(ours.length, theirs.length); k++)
      if (!same(ours[k], theirs[k])) {
        fault(name, `token ${k}: ${ours[k]} and not ${theirs[k]}`);
        break;
      }
  });
  let jobs = names.map((name, i) => path.join(work, `${i}.kti`));
  const of = (job, type) => job.replace(/kti$/, type);
  for (const job of jobs) fs.rmSync(job, {force: true});
  let told = run('kextract', ['-LANGUAGE', 'ENGLISH', ...names.flatMap((name, i) => [jobs[i], name])]);
  told = told.replace(/.*: unknown encoding .*\n/g, '');  // a mutated label
  names = names.filter((name, i) => fs.existsSync(jobs[i]));
  jobs = jobs.filter(job => fs.existsSync(job));
  told += run('kmerge', jobs.flatMap(job => [job, of(job, 'anc'), of(job, 'same.html')]));
  if (told) fault(names[0], told);
  names.forEach((name, i) => {
    const before = tree(parse(name)), after = tree(parse(of(jobs[i], 'same.html')));
    const at = before.findIndex((line, k) => line !== after[k]);
    if (at >= 0 || before.length !== after.length)
      fault(name, `comes back as ${after[at]} and not ${before[at]}`);
  });
  for (const job of jobs) {
    const lines = fs.readFileSync(of(job, 'txt'), 'utf8').split('\n').slice(0, -1).map(reversed);
    fs.writeFileSync(of(job, 'tra'), lines.map(line => line[0] + '\n').join(''));
    fs.writeFileSync(of(job, 'ali'), lines.map(line => line[1] + '\n').join(''));
  }
  const carried = run('kcarry', ['-LANGUAGE', 'ENGLISH', '-TARGET-LANGUAGE', 'GERMAN',
    ...jobs.flatMap(job => [job, of(job, 'tra'), of(job, 'ali'), of(job, 'out.kti')])]);
  jobs.forEach((job, i) => {
    const merged = run('kmerge', [of(job, 'out.kti'), of(job, 'anc'), of(job, 'new.html')]);
    const dropped = carried.split('\n').some(line => line.startsWith(job + ':') && / font/.test(line) && !/: 0 fonts/.test(line.replace(job, '')));
    if (merged || dropped) return;  // repairs that were reported
    if (tokens(fs.readFileSync(names[i])).mixed) return;  // where a drawing ends is not judged
    const source = elements(parse(names[i])), result = elements(parse(of(job, 'new.html')));
    const places = !source.crossed;
    const before = source.of(places), after = result.of(places);
    const at = before.findIndex((line, k) => line !== after[k]);
    if (at >= 0 || before.length !== after.length)
      fault(names[i], `translated, it has ${after[at]} and not ${before[at]}`);
  });
}

const whole = pages.filter(name => {
  const bytes = fs.readFileSync(name);
  return bytes.length > 0 && !bytes.includes(0) && Buffer.from(bytes.toString('utf8')).equals(bytes) &&
         !/charset=["']?(?!utf-8)/i.test(bytes.toString('latin1'));
});
const small = whole.filter(name => fs.statSync(name).size <= largest);
for (let i = 0; i < whole.length; i += batch) judge(whole.slice(i, i + batch));
for (let done = 0; done < +count; done += batch) {
  const names = [];
  for (let i = 0; i < batch; i++) {
    names.push(path.join(work, `page${i}.html`));
    fs.writeFileSync(names[i], mutated(fs.readFileSync(small[random(small.length)], 'utf8')));
  }
  judge(names);
}
if (faults > 0) {
  console.error(`${faults} faults; the first page is /tmp/parse5-fault.html`);
  process.exit(1);
}
console.log(`parse5 agrees about ${whole.length} pages and ${count} mutated ones`);
