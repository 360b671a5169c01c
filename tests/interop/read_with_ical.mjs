// Prints the cards of a vCard file as ical.js reads them, as one JSON array.
//
//   node read_with_ical.mjs FILE
//
// Runs in the folder into which its package was installed.

import { readFileSync } from "node:fs";
import ICAL from "ical.js";

console.log(JSON.stringify(ICAL.parse(readFileSync(process.argv[2], "utf8"))));
