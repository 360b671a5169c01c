'use strict';

// Size and date of the last backup. The date stands in the name when the server does not say it, and so does the number
// of people: Varnok-2024-03-05-140709-120.vcf.
const BACKUP_NAME = /^Varnok-(\d+)-(\d\d)-(\d\d)-(\d\d)(\d\d)(\d\d)-(\d+)\.\w+$/;

const backupName = document.getElementById('file-name').textContent;
const backupLink = document.getElementById('download');

function dateText(date) {
  return new Intl.DateTimeFormat(document.documentElement.lang, { dateStyle: 'long', timeStyle: 'short' }).format(date);
}

function addFact(icon, text) {
  const fact = element('span');
  fact.append(element('span', `icon ${icon}`), text);
  document.getElementById('file-facts').append(fact);
}

function showFacts(headers) {
  const [, year, month, day, hour, minute, second, count] = BACKUP_NAME.exec(backupName) ?? [];
  const named = year && new Date(year, month - 1, day, hour, minute, second);
  const date = headers.has('Last-Modified') ? new Date(headers.get('Last-Modified')) : named;
  document.getElementById('file-facts').replaceChildren();
  if (headers.has('Content-Length')) addFact('size-icon', sizeText(Number(headers.get('Content-Length'))));
  if (date) addFact('clock-icon', dateText(date));
  if (count) addFact('people-icon', new Intl.NumberFormat(document.documentElement.lang).format(count));
}

function showMissing(error) {
  document.getElementById('notice').replaceChildren(
    element('span', 'icon alert-icon'),
    element('span', 'notice-text', words.error ?? ''),
    element('span', 'notice-detail', error.status ?? ''));
}

// The words first: numbers and dates are written in their language.
async function start() {
  backupLink.href = encodeURIComponent(backupName);
  await askList().then(({ header }) => useWords(header)).catch(() => {});
  try {
    showFacts((await ask(backupLink.href, { method: 'HEAD' })).headers);
  } catch (error) {
    showMissing(error);
  }
}

start();
