'use strict';

// What the pages share: elements, sizes, and links to the other pages.

const UNITS = ['byte', 'kilobyte', 'megabyte', 'gigabyte'];

function element(tag, className, text) {
  const made = document.createElement(tag);
  if (className) made.className = className;
  if (text !== undefined) made.textContent = text;
  return made;
}

// In the language of the page: 1.5 MB.
function sizeText(bytes) {
  const power = Math.min(UNITS.length - 1, Math.floor(Math.log10(Math.max(bytes, 1)) / 3));
  return new Intl.NumberFormat(document.documentElement.lang, {
    style: 'unit', unit: UNITS[power], unitDisplay: 'short', maximumFractionDigits: power > 0 ? 1 : 0,
  }).format(bytes / 1000 ** power);
}

// A link to a page that fills in its own texts is named by the heading of that page, and hidden while the page does not
// exist: there is none to download or upload before the first backup.
async function nameLink(link) {
  let page;
  try {
    page = await (await ask(link.getAttribute('href'))).text();
  } catch {
    return;
  }
  const name = new DOMParser().parseFromString(page, 'text/html').querySelector('h1')?.textContent.trim();
  if (!name) return;
  link.querySelector('.tab-name').textContent = name;
  link.title = name;
  link.hidden = false;
}

for (const link of document.querySelectorAll('.tab[hidden]')) nameLink(link);
