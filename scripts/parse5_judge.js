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

// The tokens that parse5 hands to its tree construction, outside of foreign content.
class Recorder extends parse5.Parser {
  record(kind, token, name) {
    const at = token.location;
    if (!at || token === this.last) return;  // one that is looked at again
    this.last = token;
    if (this.tokenizer.inForeignNode || /^(svg|math)$/.test(name)) return;
    let line = `${kind} ${at.startOffset} ${at.endOffset} ${name}`;
    if (kind === 'S')
      for (const {name: attribute} of token.attrs) {
        const place = at.attrs[attribute];
        const raw = this.source.slice(place.startOffset, place.endOffset);
        const end = /^.[^=]*=\s*\S/.test(raw) ? place.endOffset : 0;
        // parse5 does not say where a value ends that another attribute follows at once.
        line += ` ${attribute}=${end === 0 ? '*' : end}`;
      }
    this.lines.push(line);
    if (kind === 'S')
      this.tags.push(name + JSON.stringify(token.attrs.filter(({name}) => !changed.test(name))));
  }
  onStartTag(token) { this.record('S', token, token.tagName); super.onStartTag(token); }
  onEndTag(token) { this.record('E', token, token.tagName); super.onEndTag(token); }
  onComment(token) { this.record('O', token, ''); super.onComment(token); }
  onDoctype(token) { this.record('O', token, ''); super.onDoctype(token); }
}

const changed = /^(lang|xml:lang|dir|title|alt|placeholder|aria-label|aria-description|summary|label|abbr|value|content)$/;

function read(bytes) {
  const recorder = new Recorder({sourceCodeLocationInfo: true, scriptingEnabled: false});
  recorder.source = bytes.toString('latin1');
  recorder.lines = [];
  recorder.tags = [];
  recorder.tokenizer.write(recorder.source, true);
  return recorder;
}

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

// The elements of a tree whatever their order, without what a translation may change.
function elements(node, list = []) {
  for (const child of node.childNodes ?? []) {
    if (child.attrs)
      list.push(child.nodeName + JSON.stringify(child.attrs.filter(({name}) => !changed.test(name))));
    elements(child.content ?? child, list);
  }
  return list;
}

function parse(name) {
  return parse5.parse(fs.readFileSync(name, 'utf8'), {scriptingEnabled: false, sourceCodeLocationInfo: true});
}

let seed = 1;
function random(n) {  // the same on every run
  seed = (Math.imul(seed, 1103515245) + 12345) >>> 0;
  return (seed >>> 8) % n;
}

// Whether the tree has no element twice, as it has those that cross others.
function isNested(node, seen = new Set()) {
  return (node.childNodes ?? []).every(child => {
    const at = child.attrs && child.sourceCodeLocation?.startOffset;
    if (at !== undefined && seen.has(at)) return false;
    seen.add(at ?? child);
    return isNested(child.content ?? child, seen);
  });
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

function judge(names, areMutated) {
  const listed = spawnSync(path.join(build, 'tests/programs/list_tokens'), names,
                           {encoding: 'latin1', maxBuffer: 1 << 28}).stdout.split('\nP ');
  names.forEach((name, i) => {
    const expected = read(fs.readFileSync(name)).lines;
    let ours = listed[i].split('\n').slice(1).filter(line => line && !line.startsWith('T'));
    if (/<(svg|math|select|template|frameset)/i.test(fs.readFileSync(name, 'latin1'))) return;
    const length = fs.statSync(name).size;
    // The standard makes no token of "</>".
    const text = fs.readFileSync(name, 'latin1');
    ours = ours.filter(line => !(line[0] === 'O' && text.startsWith('</>', +line.split(' ')[1])));
    // A tag that the end of the page cuts is no token of the standard.
    ours = ours.filter(line => !(line[0] === 'O' && +line.split(' ')[2] === length));
    const theirs = expected.filter(line => !(line[0] === 'O' && +line.split(' ')[2] >= length));
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
    if (merged || dropped) return;  // repairs that were told
    // What a broken page has in which element depends on the order of its words.
    const isWhole = !areMutated && isNested(parse(names[i]));
    const list = name =>
      (isWhole ? elements(parse(name)) : read(fs.readFileSync(name)).tags).sort();
    const before = list(names[i]), after = list(of(job, 'new.html'));
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
for (let i = 0; i < whole.length; i += batch) judge(whole.slice(i, i + batch), false);
for (let done = 0; done < +count; done += batch) {
  const names = [];
  for (let i = 0; i < batch; i++) {
    names.push(path.join(work, `page${i}.html`));
    fs.writeFileSync(names[i], mutated(fs.readFileSync(small[random(small.length)], 'utf8')));
  }
  judge(names, true);
}
if (faults > 0) {
  console.error(`${faults} faults; the first page is /tmp/parse5-fault.html`);
  process.exit(1);
}
console.log(`parse5 agrees about ${whole.length} pages and ${count} mutated ones`);
