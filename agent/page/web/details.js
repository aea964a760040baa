// What is selected, and what is told of it.
function selectedTime() {
  const lane = lanes[selected.lane];
  if (selected.index >= 0) return lane.at[selected.index];
  return selected.supply >= 0 ? lane.supplies[selected.supply].time : null;
}

function select(lane, what) {
  Object.assign(selected, {lane, index: -1, supply: -1}, what);
  if (selected.index >= 0) tellTransaction();
  else if (selected.supply >= 0) tellSupply();
  else tell('Nothing selected', []);
  const time = selectedTime();
  if (time !== null && (time < view.from || time > view.to)) {
    const half = (view.to - view.from) / 2;
    show(time - half, time + half);
  }
  redraw();
}

function tell(title, parts) { byId('details').replaceChildren(element('h3', {}, title), ...parts); }

function list(pairs) {
  const made = element('dl');
  for (const [name, value] of pairs)
    if (value !== null && value !== undefined && value !== '')
      made.append(element('dt', {}, name), element('dd', {}, plain(value)));
  return made;
}

function shapeOf(lane, index) { return lane.shapes[lane.shape[index]]; }

function tellTransaction() {
  const lane = lanes[selected.lane], shape = shapeOf(lane, selected.index);
  const written = bytesOf(shape.write), read = bytesOf(shape.read);
  const parts = [list([
    ['Request', shape.request || 'not asked for by this program'],
    ['Address', `device ${hex(shape.device)}, command ${hex(shape.command)}`],
    ['What', shape.what], ['Written', written.map(byte => hex(byte).slice(2)).join(' ')],
    ['Asked for', plural(shape.readLength, 'byte') + ', count byte included'],
    ['Result', shape.error ? [...new Set([titleOf(shape.error), shape.failure])].filter(Boolean).join(': ')
      : read.length ? `${plural(read.length, 'byte')}, count byte ${read[0]}` : 'not known'],
    ['Attempt', shape.attempt > 1 ? String(shape.attempt) : ''],
  ])];
  if (read.length) parts.push(element('pre', {}, dump(read)));
  if (shape.notes.length)
    parts.push(element('div', {}, 'What the handler made of it:'),
               element('ul', {}, ...shape.notes.map(note => element('li', {}, plain(note)))));
  tell(`${exact(lane.at[selected.index])}  ${plain(lane.slot)}, transaction ${selected.index + 1} of ${lane.at.length}`,
       parts);
}

function tellSupply() {
  const lane = lanes[selected.lane], supply = lane.supplies[selected.supply];
  const parts = [list([
    ['Verdict', supply.verdict], ['Reason', supply.reason], ['Descriptor', supply.descriptor],
    ['MFR_ID', supply.mfrId], ['Manufacturer', supply.manufacturerName],
    ['Product name', supply.productName], ['Part number', supply.partNumber],
    ['Product version', supply.productVersion], ['Serial number', supply.serialNumber],
    ['Hardware error', supply.hwError === null ? '' : supply.hwError ? 'yes' : 'no'],
    ['Suspect fields', supply.suspect.join(', ')],
    ['Transactions', supply.transactions], ['Lasted', durationText(supply.end - supply.time)],
    ['Source', supply.source],
  ])];
  if (supply.fdl) parts.push(element('div', {}, 'FDL:'),
    element('pre', {}, supply.fdl.split('\n').map(plain).join('\n')));
  tell(`${exact(supply.time)}  ${plain(lane.slot)}: ${supply.verdict}`, parts);
}

function tellSeveral(number, first, last) {
  const lane = lanes[number], counts = new Map();
  for (let index = first; index < last; ++index) {
    const error = shapeOf(lane, index).error;
    counts.set(error, (counts.get(error) || 0) + 1);
  }
  const items = [];
  for (let index = first; index < Math.min(last, first + 12); ++index) {
    const shape = shapeOf(lane, index);
    items.push(element('li', {}, element('button', {type: 'button', class: 'plain',
      on: {click: () => select(number, {index})}},
      `${exact(lane.at[index])}  ${shape.request} ${hex(shape.command)}: ${titleOf(shape.error)}`)));
  }
  Object.assign(selected, {lane: number, index: -1, supply: -1});
  tell(`${plain(lane.slot)}: ${plural(last - first, 'transaction')} here`, [
    list([...counts].map(([error, count]) => [titleOf(error), String(count)])),
    element('ul', {}, ...items),
    element('button', {type: 'button', on: {click: () => {
      const half = Math.max(lane.at[last - 1] - lane.at[first], 1e-4);
      show(lane.at[first] - half / 4, lane.at[last - 1] + half / 4);
    }}}, 'Zoom to them')]);
  redraw();
}

const durationText = seconds => seconds < 60 ? seconds.toFixed(3) + ' s'
  : seconds < 3600 ? (seconds / 60).toFixed(1) + ' min' : (seconds / 3600).toFixed(2) + ' h';

// What stands at a place of the picture.
function hit(x, y) {
  const number = Math.min(Math.max(Math.floor(y / kLane), 0), lanes.length - 1), lane = lanes[number];
  const time = timeAt(x), inside = y - number * kLane;
  if (x < kGutter) return select(number, {});
  if (inside < kBar.y + kBar.height + 2) {
    let supply = -1;
    lane.supplies.forEach(each => { if (each.time <= time + 3 / scale()) supply = each.index; });
    return select(number, {supply});
  }
  const reach = 5 / scale();
  let first = lowerBound(lane.at, time - reach), last = lowerBound(lane.at, time + reach);
  if (first === last) return select(number, {});
  // Where ticks can be told apart, the nearest one is meant.
  let nearest = first, spread = Infinity;
  for (let index = first; index < Math.min(last, first + 2000); ++index) {
    if (Math.abs(lane.at[index] - time) < Math.abs(lane.at[nearest] - time)) nearest = index;
    if (index > first) spread = Math.min(spread, lane.at[index] - lane.at[index - 1]);
  }
  return last - first === 1 || spread * scale() >= 2 ? select(number, {index: nearest})
                                                     : tellSeveral(number, first, last);
}

// The next or previous one of a kind, seen from what is selected.
function step(what, by) {
  const lane = lanes[selected.lane], now = selectedTime();
  if (!lane) return;
  if (what === 'verdict') {
    const at = lane.supplies.map(supply => supply.time);
    let index = selected.supply >= 0 ? selected.supply + by
      : by > 0 ? lowerBound(at, now === null ? view.from : now + 1e-9) : lowerBound(at, now === null ? view.to : now) - 1;
    if (index >= 0 && index < at.length) select(selected.lane, {supply: index});
    return;
  }
  const among = what === 'failure' ? lane.failed.indexes : null;
  const count = among ? among.length : lane.at.length;
  const timeOf = each => lane.at[among ? among[each] : each];
  let each;
  if (selected.index >= 0) {
    each = among ? lowerBound(among, selected.index + (by > 0 ? 1 : 0)) - (by > 0 ? 0 : 1) : selected.index + by;
  } else {
    const times = among ? lane.failed.at : lane.at, start = now === null ? (by > 0 ? view.from : view.to) : now;
    each = lowerBound(times, start) - (by > 0 ? 0 : 1);
  }
  if (each >= 0 && each < count && timeOf(each) !== undefined) select(selected.lane, {index: among ? among[each] : each});
}
