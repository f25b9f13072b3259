// The page of the back end: logs in, shows the databases as trees, changes values, shows the log.
"use strict";

const element = (id) => document.getElementById(id);
let token = sessionStorage.getItem("token");

function say(text, kind) {
  element("message").textContent = text;
  element("message").className = kind || "";
}

const versions = {}; // of the databases, as they were last seen: by type

// The answer as a value, or as text; an Error with the back end's reason otherwise.
async function ask(method, path, value) {
  const options = { method, headers: { "Content-Type": "application/json" } };
  if (token) options.headers.Authorization = "Bearer " + token;
  if (value !== undefined) options.body = JSON.stringify(value);
  const type = path.split("/")[2];
  if (method !== "GET" && versions[type]) options.headers["If-Match"] = versions[type];
  const answer = await fetch(path, options);
  const text = await answer.text();
  const isJson = (answer.headers.get("Content-Type") || "").startsWith("application/json");
  if (!answer.ok) {
    if (answer.status === 401 && token) leave();
    throw new Error(isJson ? JSON.parse(text).error : answer.statusText);
  }
  versions[type] = answer.headers.get("ETag") || versions[type];
  return isJson ? JSON.parse(text) : text;
}

const urlOf = (type, path) => "/api/" + type + "/" + encodeURIComponent(path);
const join = (path, step) => (path ? path + "." + step : step);

// One line for a plain value, a part that opens for an object or an array.
function nodeFor(type, path, name, value) {
  if (value === null || typeof value !== "object") return leafFor(type, path, name, value);
  const isArray = Array.isArray(value);
  const names = Object.keys(value);
  const part = document.createElement("details");
  const title = document.createElement("summary");
  const count = document.createElement("span");
  title.textContent = name;
  count.className = "count";
  count.textContent = isArray ? "[" + names.length + "]" : "{" + names.length + "}";
  title.append(count);
  part.append(title);
  part.addEventListener("toggle", () => {  // filled when it is opened first
    if (part.open && part.children.length === 1) {
      for (const key of names) {
        const step = isArray ? "[" + key + "]" : key;
        part.append(nodeFor(type, join(path, step), step, value[key]));
      }
    }
  });
  return part;
}

function leafFor(type, path, name, value) {
  const line = document.createElement("div");
  const label = document.createElement("span");
  const button = document.createElement("button");
  line.className = "leaf";
  label.className = "name";
  label.textContent = name + " ";
  button.type = "button";
  button.className = typeof value === "string" ? "text" : "";
  button.textContent = value === "" ? "(empty)" : String(value);
  button.dataset.place = type + "/" + path;
  button.addEventListener("click", () => edit(button, type, path, value));
  line.append(label, button);
  return line;
}

// A text stays a text; for anything else what is typed is read as JSON.
function typed(text, old) {
  if (typeof old === "string") return text;
  try {
    return JSON.parse(text);
  } catch {
    return text;
  }
}

function edit(button, type, path, old) {
  const line = button.parentNode;
  const input = document.createElement("input");
  let isOver = false;
  const finish = (value) => {
    if (isOver) return;
    isOver = true;
    const name = path.split(".").pop();
    line.replaceWith(leafFor(type, path, name, value));
  };
  input.value = String(old);
  input.setAttribute("aria-label", path);
  input.addEventListener("blur", () => finish(old));
  input.addEventListener("keydown", async (event) => {
    if (event.key === "Escape") finish(old);
    if (event.key !== "Enter" || input.readOnly) return;
    input.readOnly = true;
    try {
      const value = await ask("PUT", urlOf(type, path), typed(input.value, old));
      say(type + " " + path + " is saved", "good");
      finish(value);
    } catch (error) {
      say("Refused: " + error.message, "bad");
      input.readOnly = false;
    }
    showLog();
  });
  button.replaceWith(input);
  input.select();
  input.focus();
}

async function showLog() {
  try {
    element("log").textContent = await ask("GET", "/log");
  } catch (error) {
    element("log").textContent = error.message;
  }
  element("log").scrollTop = element("log").scrollHeight;
}

async function showDatabases() {
  const parts = [];
  for (const type of await ask("GET", "/api")) {
    parts.push(nodeFor(type, "", type, await ask("GET", urlOf(type, ""))));
  }
  element("databases").replaceChildren(...parts);
}

function leave() {
  token = null;
  sessionStorage.clear();
  element("databases").replaceChildren();
  element("log").textContent = "";
  show();
}

function show() {
  element("login").hidden = Boolean(token);
  element("desk").hidden = !token;
  element("logout").hidden = !token;
  element("who").textContent = token ? sessionStorage.getItem("user") : "";
}

async function enter() {
  show();
  if (!token) return;
  try {
    await showDatabases();
    await showLog();
  } catch (error) {
    say(error.message, "bad");
  }
}

element("login").addEventListener("submit", async (event) => {
  event.preventDefault();
  const username = element("username").value;
  try {
    const answer = await ask("POST", "/login", { username, password: element("password").value });
    token = answer.token;
    sessionStorage.setItem("token", token);
    sessionStorage.setItem("user", username + " (" + answer.role + ")");
    say("", "");
    await enter();
  } catch (error) {
    say(error.message, "bad");
  }
  element("password").value = "";
});

element("logout").addEventListener("click", async () => {
  try {
    await ask("POST", "/logout");
  } catch (error) {
    say(error.message, "bad");
  }
  leave();
});

element("refresh").addEventListener("click", showLog);
enter();
