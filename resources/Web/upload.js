'use strict';

// Files are sent one after another, each in a request of its own, as the plain form would send it.

const uploadForm = document.getElementById('drop');
const chooser = document.getElementById('files');
const uploads = document.getElementById('uploads');
const waiting = [];
let isSending = false;

// The application undoes percent escapes and stops at quotation marks and backslashes.
function nameForSending(name) {
  return encodeURIComponent(name);
}

// One file with its place in the list.
class Upload {
  constructor(file) {
    this.file = file;
    this.row = uploads.appendChild(element('li', 'upload'));
    this.icon = this.row.appendChild(element('span', 'icon file-icon'));
    this.row.append(element('bdi', 'file-name', file.name));
    this.facts = this.row.appendChild(element('span', 'percent'));
    this.button = this.row.appendChild(element('button', 'quiet icon-only'));
    this.button.type = 'button';
    this.progress = this.row.appendChild(element('progress', ''));
    this.progress.setAttribute('aria-label', file.name);
    this.progress.max = 1;
    this.message = this.row.appendChild(element('p', 'upload-message'));
    this.wait();
  }

  wait() {
    this.show('waiting', 'file-icon');
    this.showProgress(0);
    this.message.textContent = '';
    this.setButton('close-icon', words.close, () => this.cancel());
    waiting.push(this);
  }

  // Resolves when the file has been sent or has failed; the row says which.
  async send() {
    this.show('sending', 'upload-icon');
    // The application would take the end of the request for the contents.
    if (this.file.size === 0) return this.fail('');
    const body = new FormData();
    body.append('file', this.file, nameForSending(this.file.name));
    this.request = new XMLHttpRequest();
    this.request.open('POST', 'upload.html');
    this.request.upload.addEventListener('progress', ({ loaded, total }) => this.showProgress(total ? loaded / total : 0));
    return new Promise((resolve) => {
      this.request.addEventListener('loadend', () => {
        if (this.request.status === 200) this.succeed();
        else if (this.row.isConnected) this.fail(this.request.status || '');
        resolve();
      });
      this.request.send(body);
    });
  }

  cancel() {
    if (waiting.includes(this)) waiting.splice(waiting.indexOf(this), 1);
    this.row.remove();
    this.request?.abort();
    uploads.hidden = uploads.children.length === 0;
    chooser.focus();
  }

  succeed() {
    this.show('done', 'check-icon');
    this.facts.textContent = sizeText(this.file.size);
    this.button.remove();
    say(`✓ ${this.file.name}`);
  }

  fail(status) {
    this.show('failed', 'alert-icon');
    this.facts.textContent = '';
    this.message.textContent = [words.error, status].filter(Boolean).join(' ');
    say(`${this.file.name}: ${this.message.textContent}`);
    this.setButton('retry-icon', words.error, () => {
      this.wait();
      sendWaiting();
    });
  }

  show(state, icon) {
    this.row.dataset.state = state;
    this.icon.className = `icon ${icon}`;
  }

  showProgress(part) {
    this.progress.value = part;
    this.facts.textContent = new Intl.NumberFormat(document.documentElement.lang, { style: 'percent' }).format(part);
  }

  setButton(icon, word, onClick) {
    this.button.replaceChildren(element('span', `icon ${icon}`));
    this.button.setAttribute('aria-label', [word, this.file.name].filter(Boolean).join(' – '));
    this.button.onclick = onClick;
  }
}

function say(text) {
  document.getElementById('state').textContent = text;
}

async function sendWaiting() {
  if (isSending) return;
  isSending = true;
  while (waiting.length > 0) await waiting.shift().send();
  isSending = false;
}

function add(files) {
  if (files.length === 0) return;
  uploads.hidden = false;
  for (const file of files) new Upload(file);
  sendWaiting();
}

// Without this script the form has a file field and a button; with it, the button is the file field.
function takeOverForm() {
  uploadForm.classList.add('with-script');
  chooser.multiple = true;
  chooser.tabIndex = -1;
  uploadForm.addEventListener('submit', (event) => event.preventDefault());
  document.getElementById('choose').type = 'button';
  document.getElementById('choose').addEventListener('click', () => chooser.click());
  chooser.addEventListener('change', () => {
    add([...chooser.files]);
    chooser.value = '';
  });
  // Files may be dropped anywhere on the page, where the browser would open them instead.
  let inside = 0;
  const mark = (change) => uploadForm.classList.toggle('over', (inside = Math.max(0, inside + change)) > 0);
  document.addEventListener('dragenter', () => mark(1));
  document.addEventListener('dragleave', () => mark(-1));
  document.addEventListener('dragover', (event) => event.preventDefault());
  document.addEventListener('drop', (event) => {
    event.preventDefault();
    mark(-inside);
    add([...event.dataTransfer.files]);
  });
}

takeOverForm();
askList().then(({ header }) => useWords(header)).catch(() => {});
addEventListener('beforeunload', (event) => {
  if (isSending) event.preventDefault();
});
