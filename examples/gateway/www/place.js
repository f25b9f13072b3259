// The view of a place in a database: a form for its values, tables for its arrays, links to its sections.
import { databases, isAdministrator, reload, request } from "./gateway.js";
import { announce, h, headOf, heading } from "./dom.js";
import { editView, removal } from "./edit.js";
import { controlFor } from "./form.js";
import { addressOf, go } from "./router.js";
import {
  NEW, isContainer, isEqual, isRow, isTable, join, nameOf, resolved, schemaAt, schemaIn, stepsOf, textOf, titleOf, valueAt,
} from "./schema.js";

export const link = (type, path, content, attributes) => h("a", { href: addressOf(type, path), ...attributes }, content);

// The place whose view shows the path: a row of a table, a section of the database, or the database itself.
export function placeOf(type, path) {
  const root = databases[type].schema;
  const steps = stepsOf(path);
  if (!schemaAt(root, path)) return path;
  const row = steps.findIndex(isRow);
  const table = row > 0 && schemaAt(root, steps.slice(0, row).join("."));
  if (table && isTable(root, table)) return steps.slice(0, row + 1).join(".");
  return steps.length > 0 && isContainer(schemaAt(root, steps[0])) ? steps[0] : "";
}

export function placeView(type, path) {
  const database = databases[type];
  const schema = schemaAt(database.schema, path);
  const isNew = path.endsWith(NEW);
  const value = isNew ? undefined : valueAt(database.value, path);
  if (!schema || !database.value || (value === undefined && !isNew)) {
    return { title: "Not there", node: heading(database.error ?? "There is nothing at this address.") };
  }
  const title = titleOf(database, path);
  const isStale = () => !isEqual(value, valueAt(databases[type].value, path));
  const place = {
    path, database, isNew, isEditable: isAdministrator(), isRow: stepsOf(path).some(isRow),
    partFor: (...inner) => partOf(type, path, ...inner),
  };
  const view = schema.type === "object" ? editView(type, path, controlFor(place, schema, value, path))
    : { type, isStale, node: table(type, path, schema, value) };
  const above = stepsOf(path).map((_, i) => stepsOf(path).slice(0, i).join("."));
  const crumbs = h("nav", { class: "crumbs", "aria-label": "Places above" },
    above.map((at) => link(type, at, titleOf(database, at))));
  return { ...view, title, node: h("div", {}, crumbs, heading(title), hintOf(schema),
    type === "wifi" && path === "guest" && guestSwitch(), view.node) };
}

const hintOf = (schema) => schema.description && h("p", { class: "hint" }, schema.description);

// What the form of a place does not edit itself: tables; in the view of a database, its sections.
function partOf(type, place, schema, value, path) {
  if (path === place) return null;
  if (path === "guest.enabled") return guestSwitch();
  if (place === "" && isContainer(schema)) return h("p", {}, link(type, path, schema.title));
  if (!isTable(databases[type].schema, schema) || stepsOf(place).some(isRow)) return null;
  return h("section", { "data-path": path, tabindex: -1 }, h("h2", {}, schema.title), hintOf(schema),
    table(type, path, schema, value ?? []));
}

// The members of a row that its line has room for: plain ones, with the last place for "enabled".
function columnsOf(type, schema) {
  const root = databases[type].schema;
  const row = resolved(root, schema.items);
  const all = Object.keys(row.properties).map((name) => ({ name, schema: schemaIn(root, row, name) }));
  const plain = all.filter(({ name, schema: inner }) => name !== "id" && !isContainer(inner) && !inner["x-secret"]);
  return plain.length <= 5 ? plain : [...plain.slice(0, 4), plain.find(({ name }) => name === "enabled") ?? plain[4]];
}

// The rows of an array, up to 200. On a small screen each is a card.
function table(type, path, schema, rows) {
  if (!isTable(databases[type].schema, schema)) return h("p", {}, textOf(schema, rows, databases[type]));
  const base = databases[type].value;
  const canChange = isAdministrator() && !schema.readOnly;
  const columns = columnsOf(type, schema);
  const line = (row, i) => {
    const at = join(path, `[${i}]`);
    const texts = columns.map((column) => textOf(column.schema, row[column.name], databases[type]));
    return h("tr", {}, texts.map((text, k) => (k === 0 ? h("th", { scope: "row" }, link(type, at, text))
      : h("td", { "data-title": columns[k].schema.title }, text))),
    canChange && h("td", { class: "actions" }, link(type, at, "Edit", { "aria-label": "Edit " + nameOf(row), class: "button" }),
      rows.length > (schema.minItems ?? 0) && removal(type, () => at, () => base)));
  };
  const head = headOf([...columns.map((column) => column.schema.title), ...(canChange ? [""] : [])]);
  const note = rows.length === 0 ? "None so far." : rows.length > 200 && `${rows.length - 200} more are not shown.`;
  const add = { class: "button", "aria-label": "Add to " + schema.title.toLowerCase() };
  return h("div", {}, rows.length > 0 && h("table", { class: "rows", "aria-label": schema.title }, head,
    h("tbody", {}, rows.slice(0, 200).map(line))), note && h("p", { class: "hint" }, note),
  canChange && rows.length < schema.maxItems && h("p", {}, link(type, join(path, NEW), "Add", add)));
}

// Guests on and off in one step. What is typed beside it stays.
function guestSwitch() {
  const types = ["wifi", "network", "security"];
  const button = h("button", { role: "switch", class: "switch", type: "button", disabled: !isAdministrator(), async onclick() {
    const enabled = button.getAttribute("aria-checked") !== "true";
    announce("Saving ...");
    await request("POST", "/api/guest", { enabled }).then(() => Promise.all(types.map(reload)))
      .then(() => announce("Saved"), ({ message }) => announce("Not saved: " + message));
    show();
  } });
  const show = () => {
    const [wifi, ...others] = types.map((type) => databases[type]?.value);
    const parts = [wifi?.ssids?.find(({ id }) => id === wifi.guest?.ssidId), ...others.map((value) => value?.guest)];
    const count = parts.filter((part) => part?.enabled).length;
    button.setAttribute("aria-checked", String(count === 3));
    button.textContent = "The guest network is " + ["off", "partly on", "partly on", "on"][count];
  };
  show();
  return button;
}
