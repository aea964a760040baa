// Legend and tables, and the first drawing of all.
const kMostRows = 500;

const icon = (...children) => svg('svg', {viewBox: '-9 -8 18 16', 'aria-hidden': 'true'}, ...children);

function fillLegend() {
  const item = (picture, text) => byId('legend').append(element('li', {}, icon(picture), text));
  const bar = (kind, hatch) => {
    const box = {x: -8, y: -6, width: 16, height: 12, rx: 2};
    const made = svg('g', {class: 'bar ' + kind}, svg('rect', box));
    if (hatch) made.append(svg('rect', {...box, class: 'hatch ' + hatch}));
    return made;
  };
  item(bar('v-identified tint-0', ''), 'identified, a tint a supply');
  item(bar('v-absent', ''), 'absent');
  item(bar('v-unreachable', 'h-unreachable'), 'unreachable');
  item(bar('v-fault', 'h-fault'), 'any other verdict');
  item(svg('path', {class: 'ok', d: 'M-4,6v-12M0,6v-12M4,6v-12'}), 'transaction');
  item(svg('path', {class: 'retry', d: 'M0,-2l4,5h-8z'}), 'retry');
  item(svg('path', {class: 'review', d: 'M-8,-3v6M8,-3v6M-8,0H8'}), 'review');
  item(svg('path', {class: 'swap', d: 'M-6,0l3.5,-3.5v2h5v-2l3.5,3.5l-3.5,3.5v-2h-5v2z'}), 'swap');
  if (lanes.some(lane => lane.acts.length))
    item(svg('path', {class: 'act', d: 'M-4,-4h8l-4,7z'}), 'what was done to it');
  kinds.forEach(kind => item(glyph(kind, 0, 0), kind.text));
}

function table(titles, rows) {
  const head = element('tr', {}, ...titles.map(([title, kind = '']) =>
    element('th', {scope: 'col', class: kind}, ...[title].flat())));
  return element('table', {}, element('thead', {}, head), element('tbody', {}, ...rows));
}

function fillVerdicts(most) {
  const rows = lanes.flatMap((lane, number) => lane.supplies.map(supply => ({lane, number, supply})))
    .sort((a, b) => a.supply.time - b.supply.time || a.number - b.number);
  const cell = (text, kind = '') => element('td', {class: kind}, plain(text ?? ''));
  const made = rows.slice(0, most).map(({lane, number, supply}) => element('tr', {},
    element('td', {class: 'number'}, element('button', {type: 'button', class: 'plain',
      on: {click: () => { select(number, {supply: supply.index}); chart.scrollIntoView({block: 'nearest'}); }}},
      exact(supply.time))),
    cell(lane.slot), element('td', {}, element('span', {class: 'chip ' + classOf(supply.verdict)}, supply.verdict)),
    cell(supply.descriptor), cell(supply.serialNumber), cell(durationText(supply.end - supply.time), 'number'),
    cell(supply.reason)));
  const shown = table([['Time', 'number'], ['Slot'], ['Verdict'], ['Descriptor'], ['Serial number'],
                       ['Lasted', 'number'], ['Reason']], made);
  byId('verdicts').replaceChildren(shown, ...(rows.length > most ? [element('button',
    {type: 'button', on: {click: () => fillVerdicts(rows.length)}}, `Show all ${rows.length}`)] : []));
}

function fillFailures() {
  const shown = kinds.filter(kind => lanes.some(lane => lane.errors.has(kind.name)));
  const number = count => element('td', {class: 'number' + (count ? '' : ' zero')}, count.toLocaleString('en'));
  const rows = lanes.map(lane => element('tr', {}, element('th', {scope: 'row'}, plain(lane.slot)),
    ...(data.hasFiles ? [element('td', {}, plain(lane.file))] : []), number(lane.at.length),
    number(lane.retried.at.length), number(lane.reviews.from.length),
    number(lane.supplies.filter(supply => supply.swap).length), number(lane.failed.at.length),
    ...shown.map(kind => number(lane.errors.get(kind.name) || 0))));
  byId('failures').replaceChildren(table([['Slot'], ...(data.hasFiles ? [['Recording']] : []),
    ['Transactions', 'number'], ['Retries', 'number'], ['Reviews', 'number'], ['Swaps', 'number'],
    ['Failures', 'number'], ...shown.map(kind => [[icon(glyph(kind, 0, 0)), kind.text], 'number'])], rows));
}

function fillNotes() {
  const notes = lanes.flatMap(lane => lane.notes.map(note => element('li', {}, plain(lane.slot + ': ' + note))));
  byId('notes-section').hidden = notes.length === 0;
  byId('notes').replaceChildren(...notes);
}

lanes.forEach(lane => {
  lane.errors = new Map();
  for (const index of lane.failed.indexes) {
    const name = shapeOf(lane, index).error;
    lane.errors.set(name, (lane.errors.get(name) || 0) + 1);
  }
  lane.summary = plural(lane.at.length, 'transaction') + ', ' + lane.failed.at.length.toLocaleString('en') + ' failed';
});
const total = lanes.reduce((sum, lane) => sum + lane.at.length, 0);
byId('summary').textContent = `${plural(lanes.length, 'slot')}, ${plural(total, 'transaction')}, ` +
  `${plural(lanes.reduce((sum, lane) => sum + lane.supplies.length, 0), 'verdict')}, ` +
  `${durationText(all.to - all.from)}. Made by ${data.program}.`;
fillLegend();
fillVerdicts(kMostRows);
fillFailures();
fillNotes();
tell('Click a bar or a tick', [element('div', {}, 'Times count from the start of each recording.')]);

function fit() {
  const now = Math.max(chart.clientWidth, 480);
  if (now !== width) { width = now; redraw(); }
}
new ResizeObserver(fit).observe(chart);
addEventListener('beforeprint', () => { width = 1100; draw(); });
addEventListener('afterprint', fit);
width = Math.max(chart.clientWidth, 480);
draw();
performance.mark('drawn');
