'use strict';

// The sections with a heading, in the order of the record document, and what their values are typed with.
const SECTION_INPUT_MODES = ['tel', 'email', 'text', 'url'];

function isBlank(text) {
  return text.trim() === '';
}

// Where a value leads, or nothing: web addresses of other schemes come from a stranger's contact.
function linkOf(inputMode, value) {
  const text = value.trim();
  if (isBlank(text)) return null;
  if (inputMode === 'tel') return `tel:${text.replace(/[^\d+*#,;]/g, '')}`;
  if (inputMode === 'email') return `mailto:${encodeURIComponent(text)}`;
  if (inputMode === 'url') return /^https?:\/\//i.test(text) ? text : /^[\w-]+\.[\w.-]+/.test(text) ? `https://${text}` : null;
  return null;
}

// One item of the record document as an input with its label. `item` is what the server holds.
class Field {
  static #count = 0;

  constructor(item, inputMode, isNote) {
    this.item = item;
    this.inputMode = inputMode;
    this.box = element('div', 'field');
    const label = this.box.appendChild(element('label', '', item.label));
    label.htmlFor = `field-${++Field.#count}`;
    // A text input would lose the line breaks of a value.
    const isLong = isNote || /[\r\n]/.test(item.value);
    this.input = element(isLong ? 'textarea' : 'input');
    this.input.id = label.htmlFor;
    this.input.autocomplete = 'off';
    if (!isLong) this.input.type = 'text';
    this.input.spellcheck = isNote;
    if (isNote) {
      // The heading above says the same.
      this.box.classList.add('wide');
      label.className = 'unseen';
    }
    this.input.inputMode = inputMode;
    this.input.dir = inputMode === 'text' ? 'auto' : 'ltr';
    const line = this.box.appendChild(element('div', 'line'));
    line.append(this.input);
    if (inputMode !== 'text') this.link = line.appendChild(this.#makeLink());
    this.show(item.value);
  }

  #makeLink() {
    const link = element('a', 'link');
    link.append(element('span', `icon ${this.inputMode}-icon`));
    link.target = '_blank';
    link.rel = 'noopener noreferrer';
    return link;
  }

  get value() { return this.input.value; }

  // The browser may have changed line ends; only what the user changes counts as a change.
  get isChanged() { return this.input.value !== this.baseline; }

  // A value of the server's, without a change of the user's.
  show(value) {
    this.input.value = value;
    this.baseline = this.input.value;
    this.refresh();
  }

  // The server holds something else by now; what the user typed stays, and stays a change.
  moveTo(item) {
    const typed = this.input.value;
    this.item = item;
    this.show(item.value);
    this.input.value = typed;
    this.refresh();
  }

  // Says what the server holds where it is not what the user started from. Null takes it back.
  setConflict(value) {
    this.box.querySelector('.conflict')?.remove();
    this.input.removeAttribute('aria-describedby');
    if (value === null) return;
    const hint = this.box.appendChild(element('p', 'conflict'));
    hint.append(element('span', 'icon alert-icon'), element('bdi', '', isBlank(value) ? '–' : value));
    hint.id = `${this.input.id}-conflict`;
    this.input.setAttribute('aria-describedby', hint.id);
  }

  refresh() {
    this.box.classList.toggle('changed', this.isChanged);
    if (!this.link) return;
    const target = linkOf(this.inputMode, this.input.value);
    this.link.hidden = !target;
    if (!target) return;
    this.link.href = target;
    this.link.setAttribute('aria-label', this.input.value);
  }
}

// The form of one person. Empty fields wait as buttons at the end of their section, but for the two names.
class RecordForm {
  #cards;
  #fields = [];

  constructor(cards, onInput) {
    this.#cards = cards;
    cards.addEventListener('input', (event) => {
      this.#fields.find((field) => field.input === event.target)?.refresh();
      onInput();
    });
  }

  get changes() { return this.#fields.filter((field) => field.isChanged); }
  get isChanged() { return this.#fields.some((field) => field.isChanged); }

  // The name as typed: {name, lastName, title}.
  get person() {
    const valueOf = (label) => this.#fields.find((field) => field.item.label === label)?.value.trim() ?? '';
    const title = this.#fields.find((field) => !isBlank(field.value))?.value.trim() ?? '';
    return { name: valueOf(words.name), lastName: valueOf(words.lastName), title };
  }

  // Fills the form anew; the field at the same place keeps the focus.
  show(items) {
    const focused = this.#fields.findIndex((field) => field.input === document.activeElement);
    this.#fields = [];
    this.#cards.replaceChildren();
    let section = -1;
    let card = this.#makeCard('');
    for (const item of items) {
      if (item.property === undefined) {
        section += 1;
        card = this.#makeCard(item.label);
        continue;
      }
      // The one field without a label of its own below a heading is the note.
      const isNote = section >= 0 && item.identifier === undefined;
      const field = new Field(item, SECTION_INPUT_MODES[section] ?? 'text', isNote);
      this.#fields.push(field);
      card.grid.append(field.box);
      const isName = section < 0 && (item.label === words.name || item.label === words.lastName);
      if (field.value === '' && !isName && !isNote) this.#hideBehindButton(field, card);
    }
    this.#fields[focused]?.input.focus();
  }

  #makeCard(heading) {
    const card = this.#cards.appendChild(element('fieldset', 'card'));
    if (heading) card.append(element('legend', '', heading));
    const grid = card.appendChild(element('div', 'grid'));
    const more = card.appendChild(element('div', 'more'));
    return { grid, more };
  }

  #hideBehindButton(field, card) {
    field.box.hidden = true;
    const button = card.more.appendChild(element('button', 'chip'));
    button.type = 'button';
    button.append(element('span', 'icon plus-icon'), field.item.label);
    button.addEventListener('click', () => {
      button.remove();
      field.box.hidden = false;
      field.input.focus();
    });
  }

  // Takes over what the server holds by now and keeps what the user changed. Returns how many changed fields hold
  // something else there than the user started from; those say so.
  rebase(items) {
    const current = items.filter((item) => item.property !== undefined);
    let conflicts = 0;
    this.#fields.forEach((field, position) => {
      const item = current[position];
      const isConflict = field.isChanged && item.value !== field.item.value && item.value !== field.value;
      if (isConflict) conflicts += 1;
      field.setConflict(isConflict ? item.value : null);
      if (field.isChanged) {
        field.moveTo(item);
      } else {
        field.item = item;
        field.show(item.value);
        if (!isBlank(item.value)) field.box.hidden = false;
      }
    });
    return conflicts;
  }

  // The person is gone: everything in the form counts as typed.
  keepAll(items) {
    const blank = items.filter((item) => item.property !== undefined);
    this.#fields.forEach((field, position) => field.moveTo(blank[position]));
  }

  // Whether `items` hold what was sent. An emptied slot may show an earlier entry with the same label.
  static holds(items, edits) {
    return edits.every((edit) => isBlank(edit.value) || items.some((item) =>
      item.property === edit.property && item.identifier === edit.identifier && item.value === edit.value));
  }

  setReadOnly(isReadOnly) {
    for (const field of this.#fields) field.input.readOnly = isReadOnly;
  }

  focus() { this.#fields[0]?.input.focus(); }
}
