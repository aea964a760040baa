// The picture: slots over time, with what is too narrow to be seen summed up.
const kGutter = 190, kRight = 12, kLane = 66, kAxis = 26;
const kBar = {y: 16, height: 20}, kReview = 42, kTicks = {y: 46, height: 16};

const view = {from: all.from, to: all.to};
const selected = {lane: 0, index: -1, supply: -1};
let width = 1000, drag = null;
const chart = byId('chart');
const axis = svg('svg', {id: 'axis', 'aria-hidden': 'true'});
const picture = svg('svg', {id: 'lanes'});
chart.append(axis, picture);

const scale = () => (width - kGutter - kRight) / (view.to - view.from);
const xOf = time => kGutter + (time - view.from) * scale();
const timeAt = x => view.from + (x - kGutter) / scale();

function hatches() {
  const pattern = (id, ...lines) => svg('pattern', {id, width: 7, height: 7,
    patternUnits: 'userSpaceOnUse', patternTransform: 'rotate(45)'}, ...lines);
  const line = (x1, y1, x2, y2, kind) => svg('line', {x1, y1, x2, y2, class: kind});
  return svg('defs', {},
    pattern('hatch-unreachable', line(0, 0, 0, 7, 'line-unreachable')),
    pattern('hatch-fault', line(0, 0, 0, 7, 'line-fault'), line(0, 0, 7, 0, 'line-fault')),
    pattern('hatch-many', line(0, 0, 0, 7, 'line-many')));
}

const kSteps = [1, 2, 5].flatMap(first => [-6, -5, -4, -3, -2, -1, 0].map(power => first * 10 ** power))
  .filter(step => step <= 2).concat([5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 10800, 21600,
    43200, 86400, 172800, 604800, 2592000, 31536000]).sort((a, b) => a - b);

function drawAxis() {
  const step = kSteps.find(each => each * scale() >= 90) || kSteps[kSteps.length - 1];
  axis.setAttribute('viewBox', `0 0 ${width} ${kAxis}`);
  axis.replaceChildren(label(12, 17, 'Slot', 'muted'));
  const grid = [];
  for (let n = Math.ceil(view.from / step); n * step <= view.to; ++n) {
    const x = xOf(n * step);
    axis.append(label(x, 17, timeText(n * step, step), 'muted', 'middle'));
    grid.push(`M${x.toFixed(1)},0V${lanes.length * kLane}`);
  }
  return svg('path', {class: 'grid', d: grid.join('')});
}

// Bars of one lane; those too narrow to be seen are drawn as one.
function drawBars(lane, top, into) {
  const bars = svg('g');
  let crowd = null;
  const flush = () => {
    if (crowd) bars.append(drawBar(crowd.from, crowd.to, 'v-many', 'h-many', '',
      plural(crowd.count, 'verdict') + ', zoom in to see them', top));
    crowd = null;
  };
  const starts = lane.supplies.map(supply => supply.time);
  for (let index = Math.max(lowerBound(starts, view.from) - 1, 0); index < starts.length; ++index) {
    const supply = lane.supplies[index];
    if (supply.time > view.to) break;
    const from = Math.max(xOf(supply.time), kGutter), to = Math.min(xOf(supply.end), width - kRight);
    if (to < kGutter) continue;
    if (to - from < 2.5 && lane.supplies.length > 1) {
      if (crowd && from - crowd.to > 2.5) flush();
      crowd = crowd || {from, to, count: 0};
      crowd.to = Math.max(to, from + 2.5);
      ++crowd.count;
      if (crowd.count === 1) crowd.only = supply;
      continue;
    }
    flush();
    const kind = classOf(supply.verdict);
    const tint = supply.verdict === 'identified' ? ' tint-' + serials.get(supply.serialNumber || '') : '';
    const hatch = kind === 'v-unreachable' || kind === 'v-fault' ? kind.replace('v-', 'h-') : '';
    bars.append(drawBar(from, Math.max(to, from + 2), kind + tint, hatch, supplyText(supply),
      exact(supply.time) + '  ' + supplyText(supply) + (supply.reason ? ': ' + plain(supply.reason) : ''), top));
  }
  flush();
  into.append(bars);
}

function drawBar(from, to, kind, hatch, text, title, top) {
  const box = {x: from.toFixed(1), y: top + kBar.y, width: (to - from).toFixed(1), height: kBar.height, rx: 3};
  const bar = svg('g', {class: 'bar ' + kind}, svg('title', {}, title), svg('rect', box));
  if (hatch) bar.append(svg('rect', {...box, class: 'hatch ' + hatch}));
  const fits = Math.floor((to - from - 12) / 6.4);
  if (text && fits >= 3) bar.append(label(from + 6, top + kBar.y + 14, shorten(text, fits)));
  return bar;
}

// Ticks are lines as long as there is room, else columns as high as there are many.
function drawTicks(lane, top, into) {
  const first = lowerBound(lane.at, view.from), last = lowerBound(lane.at, view.to, first);
  const bottom = top + kTicks.y + kTicks.height, columns = Math.floor((width - kGutter - kRight) / 3);
  const path = [];
  if (last - first <= columns) {
    for (let index = first; index < last; ++index)
      path.push(`M${xOf(lane.at[index]).toFixed(1)},${bottom}v-${kTicks.height - 4}`);
  } else {
    const counts = [];
    for (let column = 0, at = first; column < columns; ++column) {
      const next = lowerBound(lane.at, timeAt(kGutter + (column + 1) * 3), at, last);
      counts.push(next - at);
      at = next;
    }
    const most = Math.log1p(Math.max(...counts));
    counts.forEach((count, column) => {
      if (count) path.push(`M${kGutter + column * 3},${bottom}v-${(2 + (kTicks.height - 6) *
        Math.log1p(count) / most).toFixed(1)}h2.2V${bottom}`);
    });
  }
  into.append(svg('path', {class: 'ok', d: path.join('')}));
  drawRetries(lane, bottom, into);
  drawFailures(lane, top, into);
}

// Calls `draw` once for each stretch of `step` pixels in which there is something of `at`.
function eachBin(at, step, draw) {
  const end = lowerBound(at, view.to);
  for (let index = lowerBound(at, view.from); index < end;) {
    const bin = Math.floor((xOf(at[index]) - kGutter) / step);
    const next = Math.max(lowerBound(at, timeAt(kGutter + (bin + 1) * step), index, end), index + 1);
    draw(index, next, next - index === 1 ? xOf(at[index]) : kGutter + (bin + 0.5) * step);
    index = next;
  }
}

function drawRetries(lane, bottom, into) {
  const path = [];
  eachBin(lane.retried.at, 5, (from, to, x) => path.push(`M${x.toFixed(1)},${bottom - 1}l3,4h-6z`));
  into.append(svg('path', {class: 'retry', d: path.join('')}));
}

function drawFailures(lane, top, into) {
  eachBin(lane.failed.at, 9, (from, to, x) => {
    // The rarest is what a person looks for.
    const counts = new Map();
    for (let index = from; index < to; ++index) {
      const name = lane.shapes[lane.shape[lane.failed.indexes[index]]].error;
      counts.set(name, (counts.get(name) || 0) + 1);
    }
    const shown = kinds.filter(kind => counts.has(kind.name)).sort((a, b) =>
      (lane.errors.get(a.name) - lane.errors.get(b.name)) || a.number - b.number).slice(0, 2);
    shown.forEach((kind, row) => {
      const mark = glyph(kind, x, top + kTicks.y + 3 + 9 * row);
      mark.append(svg('title', {}, [...counts].map(([name, count]) =>
        `${count} × ${titleOf(name)}`).join(', ')));
      into.append(mark);
    });
  });
}

function drawReviews(lane, top, into) {
  const path = [];
  let before = -Infinity;
  for (let index = lowerBound(lane.reviews.to, view.from);
       index < lane.reviews.from.length && lane.reviews.from[index] <= view.to; ++index) {
    const from = Math.max(xOf(lane.reviews.from[index]), kGutter);
    const to = Math.max(xOf(lane.reviews.to[index]), from + 4);
    if (from - before < 5) continue;
    before = from;
    path.push(`M${from.toFixed(1)},${top + kReview - 2}v4M${to.toFixed(1)},${top + kReview - 2}v4` +
              `M${from.toFixed(1)},${top + kReview}H${to.toFixed(1)}`);
  }
  into.append(svg('path', {class: 'review', d: path.join('')}));
}

function drawMarks(lane, top, into) {
  const mark = (list, kind, d, titleOf) => eachBin(list.map(each => each.time), 8, (from, to, x) =>
    into.append(svg('path', {class: kind, d, transform: `translate(${x.toFixed(1)},${top + 9})`},
      svg('title', {}, list.slice(from, Math.min(to, from + 5)).map(titleOf).join('\n')))));
  mark(lane.acts, 'act', 'M-4,-4h8l-4,7z', act => exact(act.time) + '  ' + plain(act.text));
  mark(lane.supplies.filter(supply => supply.swap), 'swap',
    'M-6,0l3.5,-3.5v2h5v-2l3.5,3.5l-3.5,3.5v-2h-5v2z',
    supply => exact(supply.time) + '  another supply: ' + supplyText(supply));
}

function drawSelection(into) {
  const time = selectedTime();
  if (time === null || time < view.from || time > view.to) return;
  const x = xOf(time).toFixed(1), top = selected.lane * kLane;
  into.append(svg('path', {class: 'cursor', d: `M${x},0V${lanes.length * kLane}`}),
              svg('path', {class: 'here', d: `M${x},${top + kTicks.y - 8}V${top + kLane - 2}`}));
}

function draw() {
  const height = Math.max(lanes.length * kLane, 40);
  picture.setAttribute('viewBox', `0 0 ${width} ${height}`);
  const clip = svg('clipPath', {id: 'inside'},
    svg('rect', {x: kGutter - 6, y: 0, width: width - kGutter - kRight + 12, height}));
  const names = svg('g'), inside = svg('g', {'clip-path': 'url(#inside)'}, drawAxis());
  lanes.forEach((lane, number) => {
    const top = number * kLane, current = number === selected.lane && document.activeElement === chart;
    const name = label(12, top + 30, shorten(plain(lane.slot), 24), 'lane-name' + (current ? ' current' : ''));
    name.append(svg('title', {}, plain(lane.slot) + ', ' + plain(lane.file)));
    names.append(name, label(12, top + 46, lane.summary, 'muted'));
    if (data.hasFiles) names.append(label(12, top + 60, shorten(plain(lane.file), 28), 'muted'));
    if (number) names.append(svg('path', {class: 'rule', d: `M0,${top}H${width}`}));
    drawBars(lane, top, inside);
    drawReviews(lane, top, inside);
    drawTicks(lane, top, inside);
    drawMarks(lane, top, inside);
  });
  drawSelection(inside);
  picture.replaceChildren(hatches(), svg('defs', {}, clip), names, inside);
  const step = (view.to - view.from) / 1000;
  byId('range').textContent = `${timeText(view.from, step)} to ${timeText(view.to, step)}`;
}
