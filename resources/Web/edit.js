'use strict';

// The contacts page: the list, the form of one person, and the address of the page, which ends in the person's id.

const SAVED_SHOWN_MS = 2500;
// People without a name whose organisation or number is looked up, one request each.
const TITLES_AT_MOST = 200;

const byId = (id) => document.getElementById(id);
const list = new PeopleList(byId('list'), (id) => open(id));
const form = new RecordForm(byId('cards'), showChanges);

let current = null;    // Id of the person in the form; null without one.
let isBusy = false;    // While a request for the form is under way.
let opening = 0;       // Number of the newest request for a person; older answers are dropped.

// --- What the user is told -------------------------------------------------------------------------------------------

// An error where it happened, with a button that tries again.
function showError(notice, error, again) {
  const text = element('span', 'notice-text', words.error ?? '');
  const button = element('button', 'quiet icon-only');
  button.type = 'button';
  button.setAttribute('aria-label', words.error ?? '↻');
  button.append(element('span', 'icon retry-icon'));
  button.addEventListener('click', () => {
    notice.replaceChildren();
    again();
  });
  notice.replaceChildren(element('span', 'icon alert-icon'), text, element('span', 'notice-detail', error.status ?? ''), button);
  notice.scrollIntoView({ block: 'nearest' });
}

function clearError(notice) {
  notice.replaceChildren();
}

let stateTimer = 0;

function showState(text, isPassing) {
  clearTimeout(stateTimer);
  byId('form-state').textContent = text;
  if (isPassing) stateTimer = setTimeout(() => showState(''), SAVED_SHOWN_MS);
}

function nameOf(person) {
  return `${person.name} ${person.lastName}`.trim() || person.title || '';
}

// The heading and the buttons follow what is typed.
function showChanges() {
  const person = { ...form.person, id: current };
  const name = nameOf(person);
  byId('form-title').textContent = name || (current === NEW_PERSON ? words.new_record : '…');
  byId('save').disabled = isBusy || !form.isChanged;
  byId('remove').hidden = current === NEW_PERSON;
  byId('remove').disabled = isBusy;
  if (!byId('face').querySelector('img')) paintFace(byId('face'), person);
  document.title = current === null ? 'Varnok' : `${byId('form-title').textContent} – Varnok`;
}

function setBusy(value) {
  isBusy = value;
  byId('form').setAttribute('aria-busy', value);
  form.setReadOnly(value);
  showChanges();
}

function showPhoto(image) {
  byId('face').replaceChildren();
  if (!image.startsWith('data:image/jpeg;base64,')) return;
  const photo = element('img');
  photo.alt = '';
  photo.src = image;
  byId('face').append(photo);
}

// --- The list --------------------------------------------------------------------------------------------------------

function showCount() {
  const count = new Intl.NumberFormat(document.documentElement.lang);
  const isSearch = byId('search').value.trim() !== '';
  byId('count').textContent = isSearch ? `${count.format(list.shown)} / ${count.format(list.size)}` : count.format(list.size);
  byId('nobody').hidden = list.shown > 0;
  byId('nobody-icon').className = isSearch ? 'icon search-icon' : 'icon people-icon';
  byId('nobody-query').textContent = isSearch ? `“${byId('search').value.trim()}”` : '';
}

// Returns whether the list has come. What is shown stays until it has.
async function loadList() {
  clearError(byId('list-notice'));
  if (list.size === 0) {
    byId('placeholders').hidden = false;
    byId('count').textContent = words.loading ?? '';
  }
  byId('people').setAttribute('aria-busy', 'true');
  try {
    const { header, records } = await askList();
    useWords(header);
    byId('list').setAttribute('aria-label', `${words.name}, ${words.lastName}`);
    list.setPeople(records);
    list.choose(current);
    showCount();
    lookUpTitles();
    return true;
  } catch (error) {
    if (list.size === 0) byId('count').textContent = '';
    showError(byId('list-notice'), error, loadList);
    return false;
  } finally {
    byId('placeholders').hidden = true;
    byId('people').setAttribute('aria-busy', 'false');
  }
}

// The list document names nobody by the organisation, so people without a name are looked up one after another.
async function lookUpTitles() {
  for (const { id } of list.nameless().slice(0, TITLES_AT_MOST)) {
    try {
      const { items } = await askRecord(id);
      const title = items.find((item) => item.property !== undefined && !isBlank(item.value))?.value.trim();
      if (!title) continue;
      list.setTitle(id, title);
      showCount();
    } catch {
      return;  // The person keeps the row without a name.
    }
  }
}

function search() {
  list.search(byId('search').value);
  showCount();
}

function clearSearch() {
  byId('search').value = '';
  search();
}

// --- The form --------------------------------------------------------------------------------------------------------

function clearForm() {
  form.show([]);
  showPhoto('');
}

function hideForm() {
  const hadFocus = byId('form').contains(document.activeElement);
  byId('form').hidden = true;
  clearForm();
  document.title = 'Varnok';
  if (hadFocus) byId('list').focus();
}

async function show(id) {
  const number = ++opening;
  current = id;
  byId('remove-dialog').close();
  list.choose(id);
  clearError(byId('form-notice'));
  showState('');
  document.body.classList.toggle('has-person', id !== null);
  byId('nobody-chosen').hidden = id !== null;
  if (id === null) return hideForm();
  const wasHidden = byId('form').hidden;
  byId('form').hidden = false;
  setBusy(true);
  if (wasHidden) byId('form-title').textContent = words.loading ?? '…';
  try {
    const { image, items } = await askRecord(id);
    if (number !== opening) return;
    byId('person').scrollTop = 0;
    showPhoto(image);
    form.show(items);
    setBusy(false);
    if (id === NEW_PERSON) form.focus();
    else byId('form-title').focus({ preventScroll: true });
  } catch (error) {
    if (number !== opening) return;
    clearForm();
    setBusy(false);
    showError(byId('form-notice'), error, () => show(id));
  }
}

// What is in the form is another person by now: one who was created, or nobody after a deletion.
function become(id) {
  current = id;
  history.replaceState(history.state, '', addressOf(id));
}

// Returns whether everything that was typed is saved. What was typed stays in the form when it is not.
async function save() {
  if (isBusy || !form.isChanged) return false;
  clearError(byId('form-notice'));
  showState('');
  setBusy(true);
  const id = current;
  try {
    if (id !== NEW_PERSON && !(await catchUp(id))) return false;
    const edits = form.changes.map((field) => ({ ...field.item, value: field.value }));
    become(await saveRecord(current, edits));
    const { image, items } = await askRecord(current);
    if (!RecordForm.holds(items, edits)) throw new RequestError();
    showPhoto(image);
    form.show(items);
    showState('✓', true);
    loadList();
    return true;
  } catch (error) {
    showError(byId('form-notice'), error, save);
    return false;
  } finally {
    setBusy(false);
  }
}

// Entries may have moved, and another browser may have changed the person since the form was filled. Returns whether
// the changes can be sent; when they cannot, the form says what the server holds, and the next save overwrites it.
async function catchUp(id) {
  const { items } = await askRecord(id);
  const isEmpty = items.every((item) => item.property === undefined || item.value === '');
  if (isEmpty && (await loadList()) && !list.has(id)) {
    // Deleted meanwhile: what is in the form can be saved as a new person.
    form.keepAll(items);
    become(NEW_PERSON);
    showError(byId('form-notice'), new RequestError(), save);
    return false;
  }
  const conflicts = form.rebase(items);
  if (conflicts > 0) showError(byId('form-notice'), new RequestError(), save);
  return conflicts === 0;
}

async function remove() {
  if (isBusy) return;
  const id = current;
  byId('remove-name').textContent = byId('form-title').textContent;
  if ((await answerOf(byId('remove-dialog'))) !== 'remove' || current !== id) return;
  clearError(byId('form-notice'));
  showState(words.removing);
  setBusy(true);
  try {
    await removeRecord(id).catch(async (error) => {
      // Somebody else may have deleted the person.
      if (!(await loadList()) || list.has(id)) throw error;
    });
    loadList();
    if (current !== id) return;
    clearForm();
    close();
  } catch (error) {
    showError(byId('form-notice'), error, remove);
  } finally {
    showState('');
    setBusy(false);
  }
}

// --- Questions -------------------------------------------------------------------------------------------------------

// The value of the pressed button; "" when the dialog was left by the Escape key.
function answerOf(dialog) {
  dialog.returnValue = '';
  dialog.showModal();
  return new Promise((resolve) => {
    dialog.addEventListener('close', () => resolve(dialog.returnValue), { once: true });
  });
}

// Returns whether the form may be left, after a question when something is not saved.
async function mayLeave() {
  if (!form.isChanged) return true;
  if (isBusy || byId('unsaved-dialog').open) return false;
  byId('unsaved-name').textContent = byId('form-title').textContent;
  byId('changes').replaceChildren(...form.changes.map((field) => {
    const change = element('li');
    change.append(element('span', 'change-label', field.item.label));
    for (const [tag, value] of [['del', field.item.value], ['ins', field.value]]) {
      if (value) change.appendChild(element(tag, '', value)).dir = field.input.dir;
    }
    return change;
  }));
  const answer = await answerOf(byId('unsaved-dialog'));
  if (answer === 'save') return save();
  if (answer !== 'close') return false;
  clearForm();
  return true;
}

// --- The way through the page ----------------------------------------------------------------------------------------

function addressOf(id) {
  return id === null ? location.pathname : `#${id}`;
}

function idOfAddress() {
  const id = location.hash.slice(1);
  return /^-?\d+$/.test(id) ? id : null;
}

function goTo(id) {
  history.pushState({ from: current }, '', addressOf(id));
  show(id);
}

async function open(id) {
  if (id !== current && (await mayLeave())) goTo(id);
}

// Back to the list, by the same step of the history that led from it.
async function close() {
  if (!(await mayLeave())) return;
  if (history.state?.from === null) history.back();
  else goTo(null);
}

addEventListener('popstate', async () => {
  const wanted = idOfAddress();
  if (wanted === current) return;
  if (!form.isChanged) return show(wanted);
  // The address is put back while the question is open.
  history.pushState({ from: wanted }, '', addressOf(current));
  if (await mayLeave()) history.back();
});

addEventListener('beforeunload', (event) => {
  if (form.isChanged) event.preventDefault();
});

// --- Keys and buttons ------------------------------------------------------------------------------------------------

byId('search').addEventListener('input', search);
byId('search').addEventListener('keydown', (event) => {
  if (event.key === 'ArrowDown') list.enter();
  else if (event.key === 'Enter') list.openFirst(open);
  else if (event.key === 'Escape' && byId('search').value !== '') clearSearch();
  else return;
  event.preventDefault();
  event.stopPropagation();
});

document.addEventListener('keydown', (event) => {
  if (document.querySelector('dialog[open]')) return;
  const isTyping = event.target.matches('input, textarea');
  if ((event.ctrlKey || event.metaKey) && event.key === 's' && current !== null) save();
  else if (event.key === '/' && !isTyping) byId('search').focus();
  else if (event.key === 'Escape' && current !== null) close();
  else return;
  event.preventDefault();
});

byId('new').addEventListener('click', () => open(NEW_PERSON));
byId('close').addEventListener('click', close);
byId('remove').addEventListener('click', remove);
byId('form').addEventListener('submit', (event) => {
  event.preventDefault();
  save();
});

history.replaceState({ from: undefined }, '', location.href);
loadList().then(() => {
  if (idOfAddress() !== null) show(idOfAddress());
});
