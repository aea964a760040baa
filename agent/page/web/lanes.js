// What was recorded: the page's data as the picture needs it.
const byId = id => document.getElementById(id);
const data = JSON.parse(byId('data').textContent);

// How a failure looks; paths around 0, 0.
const kShapes = {
  noAcknowledge: 'M-3,0a3,3 0 1,0 6,0a3,3 0 1,0 -6,0',
  timeout: 'M-4,-4.5h8l-8,9h8z',
  arbitrationLost: 'M0,-5l4.5,5l-4.5,5l-4.5,-5z',
  badCount: 'M-3.6,-3.6h7.2v7.2h-7.2z',
  busGone: 'M-4,-4l8,8M4,-4l-8,8',
  addressHeld: 'M0,-4.5l5,8.5h-10z',
  unsupported: 'M-4.5,-2h9v4h-9z',
  busBusy: 'M0,-5v10M-5,0h10',
  other: 'M0,-5v10M-4.3,-2.5l8.6,5M4.3,-2.5l-8.6,5',
};
const kinds = data.kinds.map((kind, number) => ({...kind, number}));
const kindOf = name => kinds.find(kind => kind.name === name);
const titleOf = error => error === null ? 'succeeded' : kindOf(error) ? kindOf(error).text : error;
const kCalm = new Set(['identified', 'absent', 'unreachable']);
const classOf = verdict => kCalm.has(verdict) ? 'v-' + verdict : 'v-fault';

data.lanes.sort((a, b) => a.file === b.file ? a.slot.localeCompare(b.slot, 'en', {numeric: true}) : 0);
const lanes = data.lanes.map(lane => {
  const count = lane.at.length, at = new Float64Array(count), shape = Uint32Array.from(lane.shape);
  let micros = 0;
  const failed = [], retried = [];
  lane.at.forEach((step, index) => {
    micros += step;
    at[index] = micros / 1e6;
    if (lane.shapes[shape[index]].error) failed.push(index);
    if (lane.shapes[shape[index]].attempt > 1) retried.push(index);
  });
  const pick = indexes => ({indexes: Uint32Array.from(indexes),
                            at: Float64Array.from(indexes, index => at[index])});
  const supplies = lane.supplies.map((supply, index) => ({...supply, index}));
  return {...lane, at, shape, failed: pick(failed), retried: pick(retried), supplies,
          reviews: {from: Float64Array.from(lane.reviews, each => each[0] / 1e6),
                    to: Float64Array.from(lane.reviews, each => each[1] / 1e6)},
          end: count ? at[count - 1] : 0};
});
const times = pick => lanes.flatMap(lane => [lane.at, lane.supplies.map(supply => supply.time),
  lane.acts.map(act => act.time)].filter(list => list.length).map(pick));
const all = {from: Math.min(...times(list => list[0]), Infinity),
             to: Math.max(...times(list => list[list.length - 1]), 0)};
if (!(all.from > 1)) all.from = 0;
all.to = Math.max(all.to, all.from + 0.001);
all.to += (all.to - all.from) * 0.01;
lanes.forEach(lane => lane.supplies.forEach((supply, index) => {
  supply.end = index + 1 < lane.supplies.length ? lane.supplies[index + 1].time
                                                : Math.max(lane.end, supply.time);
}));
// One supply is told from another by its serial number: each has a tint of its own.
const serials = new Map();
lanes.forEach(lane => lane.supplies.forEach(supply => {
  const serial = supply.serialNumber || '';
  if (supply.verdict === 'identified' && !serials.has(serial)) serials.set(serial, serials.size % 4);
}));

// The index of the first of `sorted` that is at least `value`.
function lowerBound(sorted, value, low = 0, high = sorted.length) {
  while (low < high) {
    const middle = (low + high) >> 1;
    if (sorted[middle] < value) low = middle + 1; else high = middle;
  }
  return low;
}
