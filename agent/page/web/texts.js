// How times, bytes and texts are written for a person.
function timeText(seconds, step) {
  const decimals = step >= 1 ? 0 : Math.min(6, Math.ceil(-Math.log10(step) - 1e-9));
  if (all.to < 60) return seconds.toFixed(decimals) + ' s';
  const sign = seconds < 0 ? '-' : '', scale = 10 ** decimals;
  const units = Math.round(Math.abs(seconds) * scale), whole = Math.floor(units / scale);
  const two = number => String(number).padStart(2, '0');
  const fraction = decimals ? '.' + String(units % scale).padStart(decimals, '0') : '';
  return sign + (all.to >= 3600 ? Math.floor(whole / 3600) + ':' + two(Math.floor(whole / 60) % 60)
                                : Math.floor(whole / 60)) + ':' + two(whole % 60) + fraction;
}
const exact = seconds => timeText(seconds, 0.001);
const hex = (number, digits = 2) => '0x' + number.toString(16).toUpperCase().padStart(digits, '0');
const bytesOf = text => (text || '').match(/../g)?.map(pair => parseInt(pair, 16)) || [];
function dump(bytes) {
  const rows = [];
  for (let start = 0; start < bytes.length; start += 16) {
    const row = bytes.slice(start, start + 16);
    rows.push(row.map(byte => hex(byte).slice(2)).join(' ').padEnd(48) + ' ' + row.map(byte =>
      byte >= 0x20 && byte < 0x7F ? String.fromCharCode(byte) : '.').join(''));
  }
  return rows.join('\n');
}
// Control characters are shown as what they are.
const plain = text => String(text).replace(/[\u0000-\u001f\u007f-\u009f\u200e\u200f\u202a-\u202e\u2066-\u2069]/g,
  char => '\\x' + char.charCodeAt(0).toString(16).toUpperCase().padStart(2, '0'));
const shorten = (text, most) => text.length <= most ? text : text.slice(0, Math.max(most - 1, 1)) + '…';
const plural = (count, what) => count.toLocaleString('en') + ' ' + what + (count === 1 ? '' : 's');
function supplyText(supply) {
  return [supply.verdict, supply.descriptor, supply.serialNumber].filter(Boolean).map(plain).join('  ');
}
