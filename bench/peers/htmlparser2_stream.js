// The streaming-parser peer of bench/compare: htmlparser2 fed the file in
// blocks, cutting results from the text as read by the parser's positions.
//   htmlparser2_stream.js A|B|C FILE      results joined by NUL on stdout
//   htmlparser2_stream.js D FILE NEW      rewrites FILE through a temporary file
// Every task ends with "matches: N" on stderr. Only the text from the start
// of an open result on is kept, so memory follows the result, not the file.
'use strict';
const fs = require('fs');
const { Parser } = require('htmlparser2');

const [task, file, newContent] = process.argv.slice(2);

// The plain text of a stretch of markup: CR gone, blanks trimmed, LF and TAB
// gone; then every tag dropped and the trimmed pieces joined by one blank.
function stripMarkup(text) {
  text = text.replace(/\r/g, '').replace(/^ +| +$/g, '').replace(/[\n\t]/g, '');
  if (!text.includes('<')) return text;
  return text.split(/<[^>]*>/).map((piece) => piece.replace(/^ +| +$/g, ''))
      .filter((piece) => piece.length > 0).join(' ');
}

// Text as read, from absolute position `base` on.
let kept = '';
let base = 0;
const slice = (from, to) => kept.slice(from - base, to - base);
const dropBefore = (position) => {
  kept = kept.slice(position - base);
  base = position;
};

const output = task === 'D' ? fs.openSync(file + '.tmp~', 'w') : 1;
let pending = [];
let pendingLength = 0;
const write = (text) => {
  pending.push(text);
  pendingLength += text.length;
  if (pendingLength > (1 << 20)) flush();
};
const flush = () => {
  fs.writeSync(output, pending.join(''));
  pending = [];
  pendingLength = 0;
};

let matches = 0;
let openAt = -1;  // where the content of the element being cut starts
let depth = 0;    // divs open inside the target
let done = false;
const wanted = task === 'C' || task === 'D' ? 'div' : 'p';

const parser = new Parser({
  onopentag(name, attributes) {
    if (name !== wanted || done) return;
    if (openAt >= 0) {
      depth++;
    } else if (wanted === 'p' || attributes.id === 'target') {
      openAt = parser.endIndex + 1;
      if (task === 'D') {
        write(slice(base, openAt));
        dropBefore(openAt);
      }
    }
  },
  onclosetag(name) {
    if (name !== wanted || openAt < 0) return;
    if (depth > 0) {
      depth--;
      return;
    }
    const closeAt = parser.startIndex;
    if (task === 'D') {
      write(newContent);
    } else {
      const inner = slice(openAt, closeAt);
      if (matches > 0) write('\0');
      write(task === 'B' ? stripMarkup(inner) : inner);
    }
    matches++;
    openAt = -1;
    dropBefore(closeAt);
    done = task !== 'A' && task !== 'B';
  },
}, { decodeEntities: false });

const finish = () => {
  if (task === 'D') write(kept);
  flush();
  if (task === 'D') {
    fs.closeSync(output);
    fs.renameSync(file + '.tmp~', file);
  }
  process.stderr.write(`matches: ${matches}\n`);
};

const input = fs.createReadStream(file, { encoding: 'utf8', highWaterMark: 1 << 16 });
input.on('data', (block) => {
  if (done) {
    if (task === 'D') write(block);
    else input.destroy();
    return;
  }
  kept += block;
  parser.write(block);
  if (done) {
    // Behind the one target there is nothing to parse: C stops, D copies.
    if (task === 'C') input.destroy();
    if (task === 'D') {
      write(kept);
      dropBefore(base + kept.length);
    }
  } else if (openAt < 0 && task !== 'D') {
    dropBefore(Math.max(base, parser.endIndex + 1));
  } else if (openAt < 0 && task === 'D') {
    const safe = Math.max(base, parser.endIndex + 1);
    write(slice(base, safe));
    dropBefore(safe);
  }
});
input.on('close', finish);
