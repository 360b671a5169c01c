'use strict';

// The words of the pages. They come with the list document, in the language of the application. The last ones are
// remembered, so that a page reads right before the document has come, and when it does not come.

// Letters that tell the eight languages apart, as no member of the header names its own. The first that fits counts.
const LANGUAGE_LETTERS = [
  ['he', /\p{Script=Hebrew}/u],
  ['el', /\p{Script=Greek}/u],
  ['tr', /[ğışİ]/],
  ['es', /[¿ñ]/],
  ['de', /[äöüß]/],
  ['fr', /[éêç]/],
  ['it', /[àèìòù]/],
  ['en', /(?:)/],
];

const WORDS_STORED_AS = 'varnok.words';

// The header object of the list document; without members until it is known.
let words = {};

function languageOf(text) {
  return LANGUAGE_LETTERS.find(([, letters]) => letters.test(text))[0];
}

// Fills in every word below `root`: data-word="save" as text, data-word-label as name and tool tip of an icon.
function fillWords(root) {
  const each = (attribute, use) => {
    for (const element of root.querySelectorAll(`[${attribute}]`)) {
      const word = words[element.getAttribute(attribute)];
      if (word !== undefined) use(element, word);
    }
  };
  each('data-word', (element, word) => { element.textContent = word; });
  each('data-word-label', (element, word) => {
    element.setAttribute('aria-label', word);
    element.title = word;
  });
  each('data-word-placeholder', (element, word) => { element.placeholder = word; });
}

function useWords(header) {
  words = header;
  document.documentElement.lang = languageOf(Object.values(header).join(' '));
  document.documentElement.dir = document.documentElement.lang === 'he' ? 'rtl' : 'ltr';
  fillWords(document);
  try {
    localStorage.setItem(WORDS_STORED_AS, JSON.stringify(header));
  } catch {
    // A browser that stores nothing shows the words when the list has come.
  }
}

// Called twice: at once for the direction of the page, and for its words when the page is there.
function useRememberedWords() {
  try {
    const header = JSON.parse(localStorage.getItem(WORDS_STORED_AS));
    if (header) useWords(header);
  } catch {
    // As above.
  }
}

useRememberedWords();
document.addEventListener('DOMContentLoaded', useRememberedWords);
