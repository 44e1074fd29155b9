// The editor page of `tagwright serve`: lists a folder's pages, reads one
// located part and replaces it through the host's API. The token is asked
// once and kept in this tab's sessionStorage only.
"use strict";

const api = "/_tagwright/api/";
const $ = (id) => document.getElementById(id);

function token() { return sessionStorage.getItem("tagwright-token") || ""; }

function say(text, kind) {
  $("message").textContent = text;
  $("message").className = kind || "";
}

// Calls the API; resolves to the answer object, or throws with the host's
// refusal ({"error": ...}) as the message.
async function call(operation, parameters, body) {
  const init = { headers: { Authorization: "Bearer " + token() } };
  let url = api + operation;
  if (body) {
    init.method = "POST";
    init.headers["Content-Type"] = "application/json";
    init.body = JSON.stringify(body);
  } else {
    url += "?" + new URLSearchParams(parameters);
  }
  const response = await fetch(url, init);
  const answer = await response.json();
  if (!response.ok) {
    if (response.status === 401) sessionStorage.removeItem("tagwright-token");
    throw new Error(answer.error || response.statusText);
  }
  return answer;
}

function docName() {
  const folder = $("folder").value.replace(/\/*$/, "/");
  return folder + $("page").value;
}

// The backup beside a document: its name up to the last dot, and ".bak".
function backupName(doc) {
  const dot = doc.lastIndexOf(".");
  return (dot > doc.lastIndexOf("/") ? doc.slice(0, dot) : doc) + ".bak";
}

function locateParameters() {
  return {
    doc: docName(),
    "element-name": $("element").value,
    "attribute-name": $("attribute-name").value,
    "attribute-value": $("attribute-value").value,
    "start-instance": $("instance").value,
    "content-type": $("content-type").value,
  };
}

async function listPages() {
  const answer = await call("list", { folder: $("folder").value, pattern: "*.*", separator: "\n" });
  if (answer.matchesFound < 0) return say(answer.result, "error");
  const names = answer.matchesFound ? answer.result.split("\n") : [];
  const pages = names.map((n) => n.trim()).filter((n) => /\.(html?|xml|asp)$/i.test(n));
  $("page").replaceChildren(...pages.map((n) => new Option(n, n)));
  say(pages.length + " pages");
  showView();
}

function showView() { $("view").href = docName(); }

async function readPart() {
  const answer = await call("read", { ...locateParameters(), "count-instances": "1" });
  if (answer.matchesFound < 0) return say(answer.result, "error");
  $("current").textContent = answer.result;
  if (answer.matchesFound === 0) return say("No such part in " + docName(), "error");
  $("new-content").value = answer.result;
  say("Read part " + $("instance").value + " of " + docName());
}

async function replacePart() {
  const parameters = locateParameters();
  const answer = await call("write", null, {
    ...parameters,
    "start-instance": Number(parameters["start-instance"]),
    "count-instances": 1,
    "new-content": $("new-content").value,
  });
  if (answer.result < 0) {
    $("result").hidden = true;
    return say(answer.errorResult, "error");
  }
  $("former").textContent = answer.errorResult;
  $("backup").textContent = backupName(parameters.doc);
  $("result").hidden = false;
  await readPart();
  say("Replaced " + answer.result + " part(s) of " + parameters.doc, "done");
}

function guarded(action) {
  return () => action().catch((error) => {
    say(error.message, "error");
    if (!token()) start();
  });
}

function start() {
  const haveToken = token() !== "";
  $("token-form").hidden = haveToken;
  $("editor").hidden = !haveToken;
  if (haveToken) guarded(listPages)();
}

$("token-form").addEventListener("submit", (event) => {
  event.preventDefault();
  sessionStorage.setItem("tagwright-token", $("token").value);
  start();
});
$("list").addEventListener("click", guarded(listPages));
$("page").addEventListener("change", showView);
$("read").addEventListener("click", guarded(readPart));
$("replace").addEventListener("click", guarded(replacePart));
start();
