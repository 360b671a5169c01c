'use strict';

// Requests to the application. Every function throws a RequestError when it cannot have what it asks for.

const ANSWER_WITHIN_MS = 30000;

// The id that stands for a person who does not exist yet.
const NEW_PERSON = '-1000';

class RequestError extends Error {
  // The status that was answered; empty when no usable answer came.
  constructor(status = '') {
    super(`request failed ${status}`);
    this.status = status;
  }
}

async function ask(path, options = {}) {
  let answer;
  try {
    answer = await fetch(path, { cache: 'no-store', signal: AbortSignal.timeout(ANSWER_WITHIN_MS), ...options });
  } catch {
    throw new RequestError();
  }
  if (!answer.ok) throw new RequestError(answer.status);
  return answer;
}

async function askJSON(path, body) {
  const answer = await ask(path, body === undefined ? {} : { method: 'POST', body });
  try {
    return await answer.json();
  } catch {
    throw new RequestError();
  }
}

// {header, records: [{name, lastName, id}]}
function askList() {
  return askJSON('records.json');
}

// {image, items: [{label, property, value, identifier, index}]}; empty values when nobody has the id.
function askRecord(id) {
  return askJSON('record.json', id);
}

// `edits` are items of the record document with their new values. Returns the id of the person.
async function saveRecord(id, edits) {
  const records = edits.map(({ property, value, index, identifier }) =>
    identifier === undefined ? { name: property, value } : { name: property, value, type: index, identifier });
  const { success, recordId } = await askJSON('saverecord.json', JSON.stringify({ id, records }));
  if (success !== true || (id === NEW_PERSON && !(recordId > 0))) throw new RequestError();
  return id === NEW_PERSON ? String(recordId) : id;
}

async function removeRecord(id) {
  const { success } = await askJSON('removerecord.json', id);
  if (success !== '1') throw new RequestError();
}
