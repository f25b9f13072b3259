// The views that are not of one place: overview, search, expert view, log, audit, password.
import { databases, request, user } from "./gateway.js";
import { announce, h, headOf, heading } from "./dom.js";
import { link, placeOf } from "./place.js";
import { go } from "./router.js";
import { isObject, join, schemaAt, stepsOf, textAt, titleOf, valueAt } from "./schema.js";

// The values on the overview.
const OVERVIEW = `network/wan.[0].state network/wan.[0].ipv4.address network/wan.[0].uptime wifi/enabled
  wifi/ssids.[0].enabled wifi/ssids.[1].enabled wifi/ssids.[2].enabled security/firewall.level service/ddns.status
  gateway/about.firmware.version misc/averages.memoryUsedPercent misc/averages.temperatureCelsius`;

export function homeView() {
  const card = ([type, path]) => link(type, path, [h("span", { class: "hint" }, titleOf(databases[type], placeOf(type, path))),
    titleOf(databases[type], path), h("strong", {}, textAt(databases[type], path))], { class: "card" });
  const isThere = ([type, path]) => valueAt(databases[type]?.value, path) !== undefined;
  const there = OVERVIEW.split(/\s+/).map((place) => place.split("/")).filter(isThere);
  return { title: "Overview", node: h("div", {}, heading("Overview"), h("div", { class: "cards" }, there.map(card))) };
}

const simple = (text) => text.toLowerCase().replaceAll("-", ""); // wifi is Wi-Fi
// The places whose title, description or value has all the words, with the titles above; the upper ones first.
function hits(words) {
  const found = [];
  const visit = (database, type, path, above) => {
    const schema = schemaAt(database.schema, path);
    const value = valueAt(database.value, path);
    if (!schema || value === null || value === undefined) return;
    const isLeaf = Array.isArray(value) ? !value.some(isObject) : !isObject(value);
    const [text, titles] = [isLeaf ? textAt(database, path) : "", [...above, titleOf(database, path)]];
    const own = [titles.at(-1), schema.description, stepsOf(path).at(-1), text].join(" ");
    const all = simple(own + " " + above.join(" "));
    const isHit = words.some((word) => simple(own).includes(word)) && words.every((word) => all.includes(word));
    if (isHit) found.push({ type, path, titles, text });
    for (const key of isLeaf ? [] : Object.keys(value)) {
      visit(database, type, join(path, Array.isArray(value) ? `[${key}]` : key), titles);
    }
  };
  for (const [type, database] of Object.entries(databases)) visit(database, type, "", []);
  return found.sort((one, other) => one.titles.length - other.titles.length);
}

export function searchView(query) {
  const found = hits(simple(query).split(/\s+/).filter(Boolean));
  const lines = found.slice(0, 100).map(({ type, path, titles, text }) =>
    h("li", {}, link(type, path, titles.at(-1)), " ", text, h("small", {}, titles.slice(0, -1).join(" › "))));
  return { title: "Search", node: h("div", {}, heading("Search"),
    h("p", { role: "status" }, `${found.length} places for “${query}”`), h("ul", { class: "hits" }, lines)) };
}

// A value and all inside it, with links to their places. What is inside is made when it is opened first.
function tree(type, path, name, value) {
  if (value === null || typeof value !== "object") {
    return h("p", { class: "leaf" }, name + ": ", link(type, path, textAt(databases[type], path)));
  }
  const keys = Object.keys(value);
  const part = h("details", { ontoggle() {
    const stepOf = (key) => (Array.isArray(value) ? `[${key}]` : key);
    if (part.children.length > 1) return;
    part.append(...keys.map((key) => tree(type, join(path, stepOf(key)), stepOf(key), value[key])));
  } }, h("summary", {}, name, h("small", {}, keys.length)));
  return part;
}

export function expertView() {
  const trees = Object.entries(databases).map(([type, { value, error }]) =>
    (value === null ? h("p", {}, `${type}: ${error}`) : tree(type, "", type, value)));
  return { title: "Expert view", node: h("div", {}, heading("Expert view"), trees) };
}

// A view whose content is asked for, and can be asked for again.
function askedView(title, load, ...controls) {
  const content = h("div", {}, "Loading ...");
  const fill = () => load().then((node) => content.replaceChildren(node), ({ message }) => content.replaceChildren(message));
  for (const control of controls) control.addEventListener("change", fill);
  fill();
  const tools = h("p", { class: "control" }, controls, h("button", { type: "button", onclick: fill }, "Refresh"));
  return { title, node: h("div", {}, heading(title), tools, content) };
}

const LEVELS = ["ERROR", "WARN", "INFO", "DEBUG"];
export function logView() {
  const options = LEVELS.map((name, i) => h("option", { value: i, selected: i === 3 }, i > 0 ? name + " and worse" : name));
  const level = h("select", { "aria-label": "Level" }, options);
  const isShown = (line) => LEVELS.indexOf(/^.{14}\|\s*(\w+): /.exec(line)?.[1]) <= Number(level.value);
  return askedView("Log", async () => {
    const { body = "" } = await request("GET", "/log");
    const lines = body.split("\n").filter(isShown).reverse();
    return h("pre", { tabindex: 0, role: "region", "aria-label": "Log, newest first" }, lines.join("\n") || "Nothing.");
  }, level);
}

// Newest first; an old entry is found by a word of it.
export function auditView() {
  const word = h("input", { type: "search", "aria-label": "Only entries with", placeholder: "Only entries with ..." });
  const titles = ["When", "Who", "From", "What", "Where"];
  return askedView("Changes and logins", async () => {
    const { body } = await request("GET", "/audit");
    const all = body.map(({ time, user, address, what, path }) => [new Date(time).toLocaleString(), user, address, what, path])
      .filter((texts) => texts.join(" ").toLowerCase().includes(word.value.toLowerCase()));
    const line = (texts) => h("tr", {}, texts.map((text, i) => h(i > 0 ? "td" : "th", { "data-title": titles[i] }, text)));
    return h("div", {}, h("table", { class: "rows" }, headOf(titles), h("tbody", {}, all.reverse().slice(0, 50).map(line))),
      h("p", { class: "hint", role: "status" }, `${Math.min(50, all.length)} of ${all.length} entries`));
  }, word);
}

// With `enter`, which loads what a new password opens, if that is why one is asked for.
export function passwordView(enter) {
  const [old, fresh, again] = ["current-password", "new-password", "new-password"].map((autocomplete) =>
    h("input", { type: "password", autocomplete, required: true, maxlength: 128 }));
  const fault = h("p", { role: "alert", class: "fault" });
  const onsubmit = async (event) => {
    event.preventDefault();
    if (form.inert) return; // a second click
    fault.textContent = fresh.value === again.value ? "" : "The new passwords are not the same.";
    if (fault.textContent) return again.focus();
    form.inert = true;
    try {
      await request("PUT", "/api/me/password", { old: old.value, new: fresh.value });
      announce("The password is changed");
      form.reset();
      if (enter) await enter();
      go(enter ? location.hash : "#/", true);
    } catch (error) {
      fault.textContent = error.message;
    }
    form.inert = false;
    old.focus();
  };
  const reason = user.mustChangePassword && h("p", {}, "Choose a password of your own before you go on.");
  const name = h("input", { autocomplete: "username", value: user.user, hidden: true }); // a password manager's
  const form = h("form", { onsubmit, class: "narrow" }, name, h("label", {}, "Password", old), h("label", {}, "New password", fresh),
    h("label", {}, "New password again", again), fault, h("button", { class: "main" }, "Change"));
  const node = h("div", {}, heading("Change password"), reason, form);
  const isDirty = () => [old, fresh, again].some((input) => input.value);
  return { title: "Change password", node, isDirty, save: () => (form.requestSubmit(), false) };
}
