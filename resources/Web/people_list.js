'use strict';

// Rows beyond the visible ones, on either side: a turn of the wheel finds them drawn.
const ROWS_AHEAD = 8;
const HUES = 8;

// Letters that have no decomposition, as people type them who have no such key.
const PLAIN_LETTERS = { 'ı': 'i', 'ø': 'o', 'ł': 'l', 'đ': 'd', 'ð': 'd', 'þ': 'th', 'ß': 'ss', 'æ': 'ae', 'œ': 'oe' };

// Text without case and accents, for comparing.
function folded(text) {
  return text.normalize('NFD').replace(/\p{M}/gu, '').toLowerCase().normalize('NFD').replace(/\p{M}/gu, '')
    .replace(/[ıøłđðþßæœ]/g, (letter) => PLAIN_LETTERS[letter]);
}

function initialsOf(person) {
  const first = (text) => [...text.trim()][0] ?? '';
  const initials = first(person.name) + first(person.lastName) || first(person.title);
  return initials.toUpperCase();
}

// A circle with the initials, always in the same colour for one person.
function paintFace(face, person) {
  face.textContent = initialsOf(person);
  face.dataset.hue = person.id === NEW_PERSON ? 0 : Number(person.id) % HUES;
  face.classList.toggle('empty', face.textContent === '');
}

// The people as a list box with a row in the page for each visible person only. `onOpen` gets the id of a person who
// is clicked or chosen with the keyboard.
class PeopleList {
  #box;
  #sizer;
  #rows = new Map();  // By position in #shown.
  #rowHeight = 0;     // Pixels; 0 until the box is visible.
  #people = [];
  #shown = [];        // Of #people, those that the query leaves.
  #query = '';
  #active = -1;       // Position in #shown of the row that the keyboard is on.
  #chosen = null;     // Id of the person in the form.

  constructor(box, onOpen) {
    this.#box = box;
    this.#sizer = box.appendChild(element('div', 'sizer'));
    this.#sizer.setAttribute('role', 'presentation');
    box.addEventListener('scroll', () => this.#draw(), { passive: true });
    box.addEventListener('keydown', (event) => this.#onKey(event, onOpen));
    box.addEventListener('focus', () => { if (this.#active < 0) this.#activate(this.#positionOf(this.#chosen)); });
    box.addEventListener('click', (event) => {
      const row = event.target.closest('[role=option]');
      if (!row) return;
      this.#activate(Number(row.dataset.position));
      onOpen(row.dataset.id);
    });
    new ResizeObserver(() => this.#layOut()).observe(box);
  }

  // How many people there are, and how many of them are shown.
  get size() { return this.#people.length; }
  get shown() { return this.#shown.length; }

  has(id) { return this.#people.some((person) => person.id === id); }

  // Sorted by last name, people without any name at the end.
  setPeople(people) {
    const collator = new Intl.Collator(document.documentElement.lang, { sensitivity: 'base', numeric: true });
    for (const person of people) {
      person.key = (person.lastName || person.name).trim();
      person.folded = folded(`${person.name} ${person.lastName}`);
    }
    this.#people = people.sort((a, b) =>
      (a.key === '') - (b.key === '') || collator.compare(a.key, b.key) || collator.compare(a.name, b.name));
    this.#filter();
  }

  // What a person without a name is shown and found by, such as the organisation.
  setTitle(id, title) {
    const person = this.#people.find((each) => each.id === id);
    if (!person) return;
    person.title = title;
    person.folded = folded(title);
    this.#filter();
  }

  nameless() { return this.#people.filter((person) => person.key === '' && !person.title); }

  search(query) {
    this.#query = query;
    this.#active = -1;
    this.#box.scrollTop = 0;
    this.#filter();
  }

  choose(id) {
    this.#chosen = id;
    const position = this.#positionOf(id);
    if (position >= 0) {
      this.#active = position;
      this.#reveal(position);
    }
    this.#redraw();
  }

  // From the search field into the list.
  enter() {
    this.#box.focus();
    this.#activate(Math.max(this.#active, 0));
  }

  openFirst(onOpen) {
    if (this.#shown.length > 0) onOpen(this.#shown[0].id);
  }

  #positionOf(id) { return this.#shown.findIndex((person) => person.id === id); }

  #filter() {
    const wanted = folded(this.#query).split(/\s+/).filter(Boolean);
    this.#shown = wanted.length === 0
      ? this.#people
      : this.#people.filter((person) => wanted.every((word) => person.folded.includes(word)));
    if (this.#query === '') this.#active = this.#positionOf(this.#chosen);
    this.#box.hidden = this.#shown.length === 0;
    this.#layOut();
  }

  #layOut() {
    if (this.#box.clientHeight === 0 || this.#shown.length === 0) return this.#redraw();
    const probe = this.#sizer.appendChild(this.#makeRow());
    this.#rowHeight = probe.offsetHeight;
    probe.remove();
    this.#sizer.style.height = `${this.#shown.length * this.#rowHeight}px`;
    this.#redraw();
  }

  #redraw() {
    for (const row of this.#rows.values()) row.remove();
    this.#rows.clear();
    this.#draw();
  }

  // Makes the rows that have come into sight and drops those that have left it.
  #draw() {
    if (this.#rowHeight === 0 || this.#box.clientHeight === 0) return;
    const first = Math.max(0, Math.floor(this.#box.scrollTop / this.#rowHeight) - ROWS_AHEAD);
    const count = Math.ceil(this.#box.clientHeight / this.#rowHeight) + 2 * ROWS_AHEAD;
    const end = Math.min(this.#shown.length, first + count);
    for (const [position, row] of this.#rows) {
      if (position >= first && position < end) continue;
      row.remove();
      this.#rows.delete(position);
    }
    for (let position = first; position < end; ++position) {
      if (!this.#rows.has(position)) this.#rows.set(position, this.#sizer.appendChild(this.#rowAt(position)));
    }
    this.#markActive();
  }

  #makeRow() {
    const row = element('div', 'row');
    row.setAttribute('role', 'option');
    return row;
  }

  #rowAt(position) {
    const person = this.#shown[position];
    const row = this.#makeRow();
    row.id = `person-${person.id}`;
    row.dataset.id = person.id;
    row.dataset.position = position;
    row.style.transform = `translateY(${position * this.#rowHeight}px)`;
    row.setAttribute('aria-posinset', position + 1);
    row.setAttribute('aria-setsize', this.#shown.length);
    row.setAttribute('aria-selected', person.id === this.#chosen);

    const face = row.appendChild(element('span', 'face'));
    face.setAttribute('aria-hidden', 'true');
    paintFace(face, { title: '', ...person });

    const name = row.appendChild(element('span', 'row-name'));
    name.dir = 'auto';
    if (person.key === '') {
      name.append(person.title ?? '…');
    } else {
      name.append(person.name, person.name && person.lastName ? ' ' : '', element('b', '', person.lastName));
    }
    return row;
  }

  #activate(position) {
    if (position < 0 || position >= this.#shown.length) return;
    this.#active = position;
    this.#reveal(position);
    this.#draw();
  }

  #markActive() {
    for (const [position, row] of this.#rows) row.classList.toggle('active', position === this.#active);
    const person = this.#shown[this.#active];
    if (person && this.#rows.has(this.#active)) this.#box.setAttribute('aria-activedescendant', `person-${person.id}`);
    else this.#box.removeAttribute('aria-activedescendant');
  }

  #reveal(position) {
    const top = position * this.#rowHeight;
    const bottom = top + this.#rowHeight;
    if (top < this.#box.scrollTop) this.#box.scrollTop = top;
    else if (bottom > this.#box.scrollTop + this.#box.clientHeight) this.#box.scrollTop = bottom - this.#box.clientHeight;
  }

  #onKey(event, onOpen) {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    const page = Math.max(1, Math.floor(this.#box.clientHeight / this.#rowHeight) - 1);
    const last = this.#shown.length - 1;
    const target = {
      ArrowDown: Math.min(this.#active + 1, last),
      ArrowUp: Math.max(this.#active - 1, 0),
      PageDown: Math.min(this.#active + page, last),
      PageUp: Math.max(this.#active - page, 0),
      Home: 0,
      End: last,
    }[event.key];
    if (target !== undefined) this.#activate(target);
    else if ((event.key === 'Enter' || event.key === ' ') && this.#active >= 0) onOpen(this.#shown[this.#active].id);
    else return;
    event.preventDefault();
  }
}
