"use strict";

// A record of the trace, in short names:
//   t time in microseconds   k kind, see words         l label, as in the text ladder
//   d direction: 0 a note, 1 to the service, 2 from it, 3 from it as an answer
//   b [1 to or -1 from the far end, name, text]        n number of the request
//   s how it was sent, see ways                        c channel
//   h thread                 r 1 when it was refused   m its kind of message, in "kinds"
//   e [field of the kind or tag, value, value for people where that differs]...
//   p what follows those     x its bytes, where it is not UTF-8
const words = ["request", "answer", "event", "exception", "control", "dropped"];
const titles = ["Without a method", "Answer", "Without a method", "Exception", "Command to the simulation", "Missing here"];
const ways = ["", "with a time limit of its own", "as a subscription", "one way, without an answer"];
const longPause = 1e6;
const mostColumns = 6;
const mostPrinted = 5000;
const mostChoices = 3000;

const byId = (id) => document.getElementById(id);
const ladder = byId("ladder"), head = byId("head"), rows = byId("rows"), shown = byId("shown");
const detail = byId("detail"), find = byId("find");
const rowHeight = 1.75 * parseFloat(getComputedStyle(document.documentElement).fontSize);

let records = [], kinds = [];
let items = [];      // what is shown: the index of a record, or -1 - index for the pause before it
let columns = [];    // far ends that have a column of their own
let others = false;  // one more column for the rest
let matches = [];    // places in items
let chosen = -1;     // index of a record
let needle = "";
let printing = false;
let address = 0;     // timer: browsers do not like theirs to change too often

// Characters that cannot be seen, or that would turn the text around, are shown by their numbers.
function visible(text) {
  return text.replace(/[\u0000-\u0008\u000b-\u001f\u007f-\u009f\u200b-\u200f\u2028-\u202e\u2060-\u206f\ufeff]/g,
    (c) => c < "\u0100" ? "\\x" + c.charCodeAt(0).toString(16).padStart(2, "0")
                        : "\\u" + c.charCodeAt(0).toString(16).padStart(4, "0"));
}

// All that is shown goes through here: as text, never as markup.
function make(name, className, ...content) {
  const element = document.createElement(name);
  if (className) element.className = className;
  for (const part of content) element.append(typeof part === "string" ? visible(part) : part);
  return element;
}

function button(text, action) {
  const element = make("button", "", text);
  element.type = "button";
  element.addEventListener("click", action);
  return element;
}

function span(microseconds) {
  if (microseconds < 1000) return microseconds + " \u00b5s";
  if (microseconds < 1e6) return (microseconds / 1000).toPrecision(3) + " ms";
  if (microseconds < 60e6) return (microseconds / 1e6).toPrecision(3) + " s";
  const seconds = Math.round(microseconds / 1e6);
  if (seconds < 3600) return Math.floor(seconds / 60) + " min " + seconds % 60 + " s";
  return Math.floor(seconds / 3600) + " h " + Math.floor(seconds / 60) % 60 + " min";
}

let digits = 6;
const clock = (microseconds, places) => (microseconds / 1e6).toFixed(places);

const methodOf = (record) => record.m === undefined || record.d === 3 ? "" : kinds[record.m].name;
const tagOf = (record, element) =>
  typeof element[0] === "number" ? kinds[record.m].fields[element[0]][1] : element[0];
const isRefused = (record) => record.r === 1 || record.answer?.r === 1;

// The text as it travelled, in pieces: [is it a tag, text].
function pieces(record) {
  const method = methodOf(record);
  const all = method ? [[true, "<Method>"], [false, method], [true, "</Method>"]] : [];
  for (const element of record.e ?? []) {
    const tag = tagOf(record, element);
    all.push([true, `<${tag}>`], [false, element[1]], [true, `</${tag}>`]);
  }
  if (record.p) all.push([false, record.p]);
  return all;
}

function haystack(record) {
  record.texts ??= (record.l + "\n" + pieces(record).map((piece) => piece[1]).join("") + "\n" +
    (record.e ?? []).map((element) => element[2] ?? "").join(" ") +
    (record.b ? "\n" + record.b[1] + " " + record.b[2] : "")).toLowerCase();
  return record.texts;
}

// Which lines and calls a record is about. An answer is about what its request was; a request that
// names no call is about the one that came of it.
function relate() {
  const open = new Map(), seen = new Set();
  records.forEach((record, index) => {
    record.i = index;
    record.lines = [];
    record.calls = [];
    if (record.d === 3) {
      const request = open.get(record.n);
      open.delete(record.n);
      if (!request) return;
      request.answer = record;
      record.request = request;
      record.lines = request.lines;
      record.calls = request.calls;
      return;
    }
    let namesCalls = false;
    for (const element of record.e ?? []) {
      const role = typeof element[0] === "number" ? kinds[record.m].fields[element[0]][3] : "";
      namesCalls ||= role === "call";
      if (role === "line" && element[1]) record.lines.push(element[1]);
      if (role === "call" && !["", "0", "-1"].includes(element[1])) record.calls.push(element[1]);
    }
    for (const call of record.calls) {
      if (!seen.has(call))
        for (const request of open.values())
          if (request.begins && !request.calls.length) request.calls.push(call);
      seen.add(call);
    }
    record.begins = record.k === 0 && namesCalls && !record.calls.length;
    if (record.k === 0 && record.n && record.s !== 3) open.set(record.n, record);
  });
}

function count(valuesOf) {
  const counts = new Map();
  for (const record of records)
    for (const value of new Set(valuesOf(record))) counts.set(value, (counts.get(value) ?? 0) + 1);
  return counts;
}

function option(value, text) {
  const element = make("option", "", text);
  element.value = value;
  return element;
}

function fill(id, counts, sorted) {
  const values = [...counts.keys()];
  if (sorted) values.sort();
  const choice = (value) => option(value, `${value || "(none)"} (${counts.get(value)})`);
  byId(id).replaceChildren(option("", "all"), ...values.slice(0, mostChoices).map(choice));
  byId(id).disabled = values.length === 0;
  // A value that the list had no room for has its place once it is asked for.
  byId(id).pick = (value) => {
    byId(id).value = value;
    if (byId(id).selectedIndex < 0) byId(id).append(choice(value));
    byId(id).value = value;
  };
}

// Picks out what is shown, and finds in it.
function pickOut() {
  const line = byId("line").value, call = byId("call").value, kind = byId("kind").value;
  const refused = byId("refused").checked, only = byId("only").checked && needle !== "";
  items = [];
  matches = [];
  const names = new Map();
  let last = null;
  for (const record of records) {
    if (line && !record.lines.includes(line) || call && !record.calls.includes(call) ||
        kind && methodOf(record.request ?? record) !== kind || refused && !isRefused(record))
      continue;
    const matched = needle !== "" && haystack(record).includes(needle);
    if (only && !matched) continue;
    if (last && record.t - last.t >= longPause) items.push(-1 - record.i);
    if (matched) matches.push(items.length);
    items.push(record.i);
    if (record.b) names.set(record.b[1], (names.get(record.b[1]) ?? 0) + 1);
    last = record;
  }
  others = names.size > mostColumns;
  const common = [...names.entries()].sort((a, b) => b[1] - a[1])
    .slice(0, others ? mostColumns - 1 : mostColumns).map((entry) => entry[0]);
  columns = [...names.keys()].filter((name) => common.includes(name));
  draw();
}

function draw() {
  const narrow = matchMedia("(max-width: 50rem)").matches && !printing;
  const farEnds = columns.length + (others ? 1 : 0);
  const widths = narrow ? [4.6, 0, 2.9, 17] : [5.2, 4.8, 3.8, 26];
  for (let i = 0; i < farEnds; ++i) widths.push(narrow ? 6 : 7);
  widths.push(farEnds ? 4 : 3.5);
  ladder.style.setProperty("--width", widths.reduce((sum, width) => sum + width) + "rem");
  ladder.style.setProperty("--columns", widths.map((width, i) => i === 3 ? "1fr" : width + "rem").join(" "));
  head.replaceChildren(make("span", "time", narrow ? "" : "seconds"), make("span", "gap", "after"));
  ["application", "service", ...columns, ...(others ? ["others"] : [])].forEach((name, i) => {
    const box = make("span", "name", name);
    box.title = visible(name);
    box.style.gridColumn = String(4 + i);
    head.append(box);
  });
  byId("nothing").hidden = items.length > 0;
  rows.style.height = items.length * rowHeight + "px";
  drawRows();
  tellMatches();
}

// Only the rows that can be seen exist.
function drawRows() {
  const first = printing ? 0 : Math.max(0, Math.floor(ladder.scrollTop / rowHeight) - 10);
  const count = printing ? mostPrinted : Math.ceil(ladder.clientHeight / rowHeight) + 20;
  const elements = [];
  for (let place = first; place < Math.min(items.length, first + count); ++place)
    elements.push(drawRow(place));
  if (printing && items.length > mostPrinted)
    elements.push(make("p", "", `Printed are the first ${mostPrinted} of ${items.length} rows.`));
  shown.style.transform = `translateY(${first * rowHeight}px)`;
  shown.replaceChildren(...elements);
}

function drawRow(place) {
  const isPause = items[place] < 0;
  const record = records[isPause ? -1 - items[place] : items[place]];
  const before = place > 0 ? records[items[place - 1] < 0 ? items[place - 2] : items[place - 1]] : null;
  const row = make("div", "row " + (isPause ? "pause" : record.d === 3 ? "answer" : words[record.k]));
  for (let i = 0; i < columns.length + (others ? 1 : 0) + 2; ++i) {
    const lane = make("span", "lane");
    lane.style.gridColumn = String(4 + i);
    row.append(lane);
  }
  if (isPause) {
    const text = make("span", "span", span(record.t - before.t) + " later");
    text.style.gridColumn = "4";
    row.append(text);
    row.setAttribute("role", "presentation");
    return row;
  }
  row.id = "record" + record.i;
  row.dataset.index = String(record.i);
  row.setAttribute("role", "option");
  row.setAttribute("aria-selected", String(record.i === chosen));
  row.setAttribute("aria-posinset", String(place + 1));
  row.setAttribute("aria-setsize", String(items.length));
  row.classList.toggle("chosen", record.i === chosen);
  row.classList.toggle("refused", isRefused(record));
  row.classList.toggle("match", needle !== "" && haystack(record).includes(needle));
  row.append(make("span", "time", clock(record.t, digits)),
             make("span", "gap", before ? "+" + span(record.t - before.t) : ""));
  if (record.d === 0) {
    const note = make("span", "note", ...marked(record.l));
    note.style.gridColumn = "4";
    row.append(note);
    return row;
  }
  row.append(arrow(record.d === 1, record.l, methodOf(record), "4", record.d === 3));
  if (record.b) {
    const [direction, name, text] = record.b;
    const column = columns.indexOf(name);
    const far = arrow(direction > 0, column < 0 ? name + ": " + text : text, "",
                      `5 / span ${(column < 0 ? columns.length : column) + 1}`);
    far.classList.add("far");
    row.append(far);
  }
  return row;
}

function arrow(toTheRight, text, method, column, plain) {
  const label = make("span", "label");
  if (method && text.startsWith(method))
    label.append(make("span", "method", ...marked(method)), make("span", "rest", ...marked(text.slice(method.length))));
  else
    label.append(make("span", plain ? "method" : "", ...marked(text)));
  label.title = visible(text);
  const element = make("span", "arrow" + (toTheRight ? "" : " left"), make("i", "tip"), label);
  element.style.gridColumn = column;
  return element;
}

// The text with what is searched for marked.
function marked(text) {
  const parts = [];
  const low = needle ? text.toLowerCase() : "";
  let at = 0;
  for (let found; needle && low.length === text.length && (found = low.indexOf(needle, at)) >= 0;
       at = found + needle.length)
    parts.push(text.slice(at, found), make("mark", "", text.slice(found, found + needle.length)));
  parts.push(text.slice(at));
  return parts.filter((part) => part !== "");
}

function tellMatches() {
  const number = matches.indexOf(items.indexOf(chosen)) + 1;
  byId("matches").textContent = needle === "" ? "" : matches.length === 0 ? "no match"
    : (number > 0 ? `${number} of ` : "") + (matches.length === 1 ? "1 match" : matches.length + " matches");
}

function show(place) {
  const top = place * rowHeight, room = ladder.clientHeight - head.offsetHeight;
  if (top < ladder.scrollTop || top + rowHeight > ladder.scrollTop + room)
    ladder.scrollTop = Math.max(0, top - room / 3);
}

function choose(index) {
  chosen = index;
  describe();
  if (index >= 0) {
    show(items.indexOf(index));
    rows.setAttribute("aria-activedescendant", "record" + index);
    clearTimeout(address);
    address = setTimeout(() => history.replaceState(null, "", "#" + (index + 1)), 200);
  } else {
    rows.removeAttribute("aria-activedescendant");
  }
  drawRows();
  tellMatches();
}

// From the chosen row, or from the edge of what is seen.
function move(step) {
  let place = items.indexOf(chosen);
  if (place < 0) place = step > 0 ? Math.ceil(ladder.scrollTop / rowHeight) - 1 : items.length;
  const direction = Math.sign(step);
  place = Math.min(Math.max(place + step, 0), items.length - 1);
  while (items[place] < 0) place += direction;
  if (items[place] !== undefined) choose(items[place]);
}

function toMatch(direction) {
  if (matches.length === 0) return;
  const from = items.indexOf(chosen);
  const next = direction > 0 ? matches.find((place) => place > from) ?? matches[0]
                             : matches.findLast((place) => place < from) ?? matches.at(-1);
  choose(items[next]);
}

// The pick lists may leave a record out; whoever asks for it wants to see it.
function goTo(record) {
  if (!items.includes(record.i)) showAll();
  choose(record.i);
  rows.focus();
}

function showAll() {
  for (const id of ["line", "call", "kind"]) byId(id).value = "";
  byId("refused").checked = byId("only").checked = false;
  pickOut();
}

function refusal(record) {
  return record.l.startsWith("(") ? record.l : "Refused: " + record.l;
}

function describe() {
  detail.hidden = chosen < 0;
  if (chosen < 0) return;
  const record = records[chosen], kind = record.m === undefined ? null : kinds[record.m];
  detail.className = words[record.k];
  const close = button("Close", () => { choose(-1); rows.focus(); });
  const title = methodOf(record) || titles[record.k];
  const content = [make("header", "", make("h2", "", title), close),
                   make("p", "", make("span", "kind", words[record.k]), ` ${record.i + 1} of ${records.length}` +
                        ` at ${clock(record.t, 6)} s` + (record.h ? `, thread ${record.h}` : "") + (record.c ? `, channel ${record.c}` : "") +
                        (record.s ? `, ${ways[record.s]}` : ""))];
  if (kind?.summary) content.push(make("p", "", kind.summary));
  if (isRefused(record)) content.push(make("p", "refusal", refusal(record.answer ?? record)));

  const links = make("div", "links");
  const pair = record.answer ?? record.request;
  if (pair)
    links.append(button(record.answer ? `answer after ${span(pair.t - record.t)}: ${pair.l}`
                                      : `to ${pair.l}, sent ${span(record.t - pair.t)} before`, () => goTo(pair)));
  const pick = (id, what, value) => links.append(button(`only ${what} ${value}`, () => {
    byId(id).pick(value);
    pickOut();
    choose(record.i);
  }));
  for (const line of new Set(record.lines)) pick("line", "line", line);
  for (const call of new Set(record.calls)) pick("call", "call", call);
  if (links.childElementCount) content.push(links);

  if (record.e) {
    const table = make("table", "");
    for (const element of record.e) {
      const field = typeof element[0] === "number" ? kind.fields[element[0]] : [element[0], element[0], "not in the protocol's table"];
      table.append(make("tr", "", make("th", "", field[0], make("small", "", field[2])),
        make("td", "", element[2] ?? element[1], make("small", "", element[2] === undefined ? "" : element[1]))));
    }
    content.push(make("h3", "", "Fields"), table);
  }
  const text = make("pre", "");
  for (const [isTag, part] of pieces(record)) {
    text.append(make("span", isTag ? "tag" : "", part));
    if (isTag && part[1] === "/") text.append(document.createElement("wbr"));
  }
  content.push(make("h3", "", record.x ? "As it travelled, what is not UTF-8 as \\x.." : "As it travelled"),
               text.childNodes.length ? text : make("p", "", "nothing"));
  if (record.x) content.push(make("h3", "", "Its bytes"), make("pre", "bytes", bytes(record.x)));
  detail.replaceChildren(...content);
  detail.scrollTop = 0;
}

function bytes(hex) {
  const lines = [];
  for (let at = 0; at < hex.length; at += 32) {
    const pairs = hex.slice(at, at + 32).match(/../g);
    const text = pairs.map((pair) => parseInt(pair, 16)).map((c) => c > 31 && c < 127 ? String.fromCharCode(c) : ".");
    lines.push((at / 2).toString(16).padStart(6, "0") + "  " + pairs.join(" ").padEnd(47) + "  " + text.join(""));
  }
  return lines.join("\n");
}

function read() {
  const trace = JSON.parse(byId("trace").textContent);
  records = trace.records;
  kinds = trace.kinds;
  relate();
  const lines = count((record) => record.lines), calls = count((record) => record.calls);
  fill("line", lines, true);
  fill("call", calls, false);
  fill("kind", count((record) => record.d === 1 || record.d === 2 ? [methodOf(record)] : []), true);

  const last = records.length ? records.at(-1).t : 0;
  digits = last < 10e6 ? 6 : 3;
  const several = (number, one) => `${number.toLocaleString("en")} ${one}${number === 1 ? "" : "s"}`;
  const refused = records.filter((record) => record.r).length;
  byId("name").textContent = document.title = visible(trace.name);
  byId("summary").textContent = [several(records.length, "message"), span(last), several(lines.size, "line"),
    several(calls.size, "call"), refused + " refused"].join(" \u00b7 ");
  const origin = [trace.program && "written by " + trace.program,
                  trace.start !== undefined && "begun " + new Date(trace.start).toISOString().slice(0, 19).replace("T", " ") + " UTC"];
  byId("origin").textContent = visible(origin.filter(Boolean).join(", "));
  if (trace.complaint) {
    byId("problem").replaceChildren(make("strong", "", "Not all of the trace could be read. "), visible(trace.complaint));
    byId("problem").hidden = false;
  }
}

function listen() {
  for (const id of ["line", "call", "kind", "refused", "only"]) byId(id).addEventListener("change", pickOut);
  find.addEventListener("input", () => {
    needle = find.value.toLowerCase();
    pickOut();
    if (matches.length) show(matches.find((place) => place >= items.indexOf(chosen)) ?? matches[0]);
  });
  byId("tools").addEventListener("submit", (event) => event.preventDefault());
  byId("next").addEventListener("click", () => toMatch(1));
  byId("previous").addEventListener("click", () => toMatch(-1));
  byId("all").addEventListener("click", showAll);
  rows.addEventListener("click", (event) => {
    // By its place, since rows are made anew when the list moves under the mouse.
    const place = Math.floor((event.clientY - rows.getBoundingClientRect().top) / rowHeight);
    if (items[place] >= 0) choose(items[place]);
  });
  const page = () => Math.max(1, Math.floor(ladder.clientHeight / rowHeight) - 2);
  const keys = {ArrowDown: () => move(1), ArrowUp: () => move(-1), PageDown: () => move(page()), PageUp: () => move(-page()),
                Home: () => move(-items.length), End: () => move(items.length)};
  rows.addEventListener("keydown", (event) => {
    if (!keys[event.key] || event.ctrlKey || event.altKey || event.metaKey) return;
    event.preventDefault();
    keys[event.key]();
  });
  find.addEventListener("keydown", (event) => {
    if (event.key !== "Enter") return;
    event.preventDefault();
    toMatch(event.shiftKey ? -1 : 1);
  });
  document.addEventListener("keydown", (event) => {
    if (event.key === "/" && !event.target.matches("input, select")) {
      event.preventDefault();
      find.focus();
      find.select();
    }
    if (event.key === "Escape" && event.target !== find) {
      choose(-1);
      rows.focus();
    }
  });
  let waiting = false;
  ladder.addEventListener("scroll", () => {
    if (waiting) return;
    waiting = true;
    requestAnimationFrame(() => {
      waiting = false;
      drawRows();
    });
  });
  addEventListener("resize", draw);
  addEventListener("beforeprint", () => { printing = true; draw(); });
  addEventListener("afterprint", () => { printing = false; draw(); });
}

try {
  read();
  listen();
  pickOut();
  const wanted = Number(location.hash.slice(1)) - 1;
  if (records[wanted]) choose(wanted);
  rows.focus({preventScroll: true});
} catch (error) {
  byId("summary").textContent = "This page is damaged: " + error.message;
  throw error;
}
