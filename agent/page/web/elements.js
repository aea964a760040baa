// Elements of the document. Whatever comes from the recordings is set as text, never as markup.
const kSvg = 'http://www.w3.org/2000/svg';

function element(name, properties = {}, ...children) {
  const made = document.createElement(name);
  for (const [key, value] of Object.entries(properties)) {
    if (key === 'on') Object.entries(value).forEach(([event, act]) => made.addEventListener(event, act));
    else if (key === 'class') made.className = value;
    else made.setAttribute(key, value);
  }
  made.append(...children);  // a string becomes a text node
  return made;
}
function svg(name, attributes = {}, ...children) {
  const made = document.createElementNS(kSvg, name);
  for (const [key, value] of Object.entries(attributes)) made.setAttribute(key, value);
  made.append(...children);
  return made;
}
const label = (x, y, text, kind = '', anchor = 'start') =>
  svg('text', {x, y, class: kind, 'text-anchor': anchor}, text);
const glyph = (kind, x, y) => svg('path', {d: kShapes[kind.name] || kShapes.other,
  class: 'kind k-' + kind.name, transform: `translate(${x.toFixed(1)},${y})`});
