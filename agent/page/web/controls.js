// Zoom and pan, by mouse, keys and buttons.
let isDue = false;
function redraw() {
  if (isDue) return;
  isDue = true;
  requestAnimationFrame(() => { isDue = false; draw(); });
}

function show(from, to) {
  const least = 1e-4, length = Math.min(Math.max(to - from, least), all.to - all.from);
  const middle = (from + to) / 2;
  view.from = Math.min(Math.max(middle - length / 2, all.from), all.to - length);
  view.to = view.from + length;
  redraw();
}
function zoom(factor, at = (view.from + view.to) / 2) {
  const length = Math.min(Math.max((view.to - view.from) * factor, 1e-4), all.to - all.from);
  const from = at - (at - view.from) * length / (view.to - view.from);
  show(from, from + length);
}
const pan = part => show(view.from + (view.to - view.from) * part, view.to + (view.to - view.from) * part);

function place(event) {
  const box = picture.getBoundingClientRect(), ratio = width / box.width;
  return {x: (event.clientX - box.left) * ratio, y: (event.clientY - box.top) * ratio};
}
picture.addEventListener('pointerdown', event => {
  if (event.button !== 0) return;
  drag = {...place(event), from: view.from, to: view.to, hasMoved: false, isMarking: event.shiftKey};
  picture.setPointerCapture(event.pointerId);
});
picture.addEventListener('pointermove', event => {
  if (!drag) return;
  const {x} = place(event);
  drag.hasMoved ||= Math.abs(x - drag.x) > 4;
  if (!drag.hasMoved) return;
  if (drag.isMarking) {
    drag.mark?.remove();
    drag.mark = svg('rect', {class: 'mark', x: Math.min(x, drag.x), y: 0, width: Math.abs(x - drag.x),
      height: lanes.length * kLane});
    picture.append(drag.mark);
  } else {
    picture.classList.add('dragged');
    const by = (drag.x - x) * (drag.to - drag.from) / (width - kGutter - kRight);
    show(drag.from + by, drag.to + by);
  }
});
picture.addEventListener('pointerup', event => {
  if (!drag) return;
  const {x, y} = place(event), was = drag;
  drag = null;
  picture.classList.remove('dragged');
  was.mark?.remove();
  if (!was.hasMoved) hit(x, y);
  else if (was.isMarking) show(timeAt(Math.min(x, was.x)), timeAt(Math.max(x, was.x)));
});
picture.addEventListener('pointercancel', () => { drag?.mark?.remove(); drag = null; });
picture.addEventListener('dblclick', event => zoom(1 / 4, timeAt(place(event).x)));
picture.addEventListener('wheel', event => {
  if (event.ctrlKey || event.metaKey) zoom(event.deltaY > 0 ? 1.25 : 0.8, timeAt(place(event).x));
  else if (event.shiftKey || Math.abs(event.deltaX) > Math.abs(event.deltaY))
    pan((event.deltaX || event.deltaY) / 1000);
  else return;
  event.preventDefault();
}, {passive: false});

const centre = () => selectedTime() ?? (view.from + view.to) / 2;
const kKeys = {
  '+': () => zoom(0.5, centre()), '=': () => zoom(0.5, centre()), '-': () => zoom(2, centre()),
  ArrowLeft: () => pan(-0.2), ArrowRight: () => pan(0.2),
  '0': () => show(all.from, all.to), Home: () => show(all.from, all.to),
  ArrowUp: () => select(Math.max(selected.lane - 1, 0), {}),
  ArrowDown: () => select(Math.min(selected.lane + 1, lanes.length - 1), {}),
  n: () => step('transaction', 1), p: () => step('transaction', -1),
  f: () => step('failure', 1), F: () => step('failure', -1),
  v: () => step('verdict', 1), V: () => step('verdict', -1),
  Enter: () => { const at = selectedTime(), part = (view.to - view.from) / 16;
                 if (at !== null) show(at - part, at + part); },
  Escape: () => select(selected.lane, {}),
};
chart.addEventListener('keydown', event => {
  const act = event.ctrlKey || event.metaKey || event.altKey ? null : kKeys[event.key];
  if (!act) return;
  event.preventDefault();
  act();
});
chart.addEventListener('focus', redraw);
chart.addEventListener('blur', redraw);
for (const [id, key] of [['zoom-in', '+'], ['zoom-out', '-'], ['pan-left', 'ArrowLeft'],
                         ['pan-right', 'ArrowRight'], ['show-all', '0']])
  byId(id).addEventListener('click', kKeys[key]);
