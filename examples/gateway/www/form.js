// Controls made from a schema. A control has a node; read() gives its value, undefined for none; check() marks what
// cannot be and returns the first control that has it; find(steps) is the control of a place inside, or the nearest
// one around it; mark(fault) says what is wrong with it, and focus() goes there.
import { h, newId } from "./dom.js";
import { choicesOf, isObject, isRow, join, resolved, schemaIn, stepsOf, textOf } from "./schema.js";

// The control of a value. `place` has the path of the form and the database, whether it isEditable, isNew or isRow,
// and partFor, which gives the node of a part that is shown but not edited here.
export function controlFor(place, schema, value, path, isRequired = true) {
  const part = place.partFor(schema, value, path);
  if (part) return shown(part);
  if (schema.type === "object") return group(place, schema, value, path);
  if (schema.readOnly || !place.isEditable) return output(place, schema, value, path);
  if (schema.type !== "array") return field(place, schema, value, path, isRequired);
  return isChoice(itemsOf(place, schema)) ? checks(place, schema, value, path) : list(place, schema, value, path);
}

const itemsOf = (place, schema) => resolved(place.database.schema, schema.items);
const isChoice = (schema) => Boolean(schema.enum || schema["x-choice"]);

// A control whose value is not edited.
function shown(node, value) {
  const read = () => value;
  const control = { node, read, check: () => null, find: () => control, mark() {}, focus: () => node.focus() };
  return control;
}

// A value that is not edited. In a new row it is what it is at first.
function output(place, schema, value, path) {
  const isRows = Array.isArray(value) && value.some(isObject);
  const text = isRows ? value.map((row) => textOf({}, row)).join("; ") : textOf(schema, value, place.database);
  const isId = path.endsWith(".id") && isRow(stepsOf(path).at(-2));
  const hidden = place.isNew || value === undefined || isId;
  return shown(h("dl", { class: "field output", "data-path": path, tabindex: -1, hidden },
    h("dt", {}, schema.title ?? stepsOf(path).at(-1)), h("dd", {}, text)), place.isNew ? schema.default : undefined);
}

// Adds the line that says what is wrong, which goes when something is typed.
function withFault(control, input, id = newId()) {
  const line = h("p", { id, class: "fault", hidden: true });
  control.mark = (fault) => {
    line.textContent = fault;
    line.hidden = !fault;
    input?.[fault ? "setAttribute" : "removeAttribute"]("aria-invalid", "true");
  };
  control.node.addEventListener("input", () => control.mark(""));
  control.node.append(line);
  return control;
}

function hintOf(schema) {
  if (schema["x-input"] || schema["x-choice"]) return "";
  const isBounded = schema.minimum !== undefined && schema.maximum < Number.MAX_SAFE_INTEGER;
  return [schema.description, isBounded && `${schema.minimum} to ${schema.maximum}`].filter(Boolean).join("; ");
}

// A single value with its label, hint and fault.
function field(place, schema, value, path, isRequired) {
  const id = newId();
  const make = KINDS.find(([fits]) => fits(schema))[1];
  const { input, read, after } = make(schema, value ?? schema.default, isRequired, place);
  input.id = id;
  input.setAttribute("aria-describedby", `${id}-hint ${id}-fault`);
  const isCheck = input.type === "checkbox";
  const label = h("label", { for: id }, schema.title ?? stepsOf(path).at(-1));
  const hint = hintOf(schema);
  const node = h("div", { class: isCheck ? "field check" : "field", "data-path": path }, !isCheck && label,
    h("div", { class: "control" }, input, isCheck ? label : after),
    h("p", { id: id + "-hint", class: "hint", hidden: !hint }, hint));
  const control = {
    node, read, find: () => control, focus: () => input.focus(),
    check() {
      const isOdd = schema.pattern && read() !== undefined && !new RegExp(schema.pattern, "u").test(read());
      const fault = isOdd ? schema.description ?? "This has another form." : input.validationMessage;
      control.mark(fault);
      return fault ? control : null;
    },
  };
  return withFault(control, input, id + "-fault");
}

// A text; a secret can be shown. An empty one is no value where there was none and need not be one.
function text(schema, value, isRequired, place, tag = "input") {
  const type = schema["x-secret"] ? "password" : schema["x-input"] ?? "text";
  const input = h(tag, {
    type: tag === "input" && type, autocomplete: "off", autocapitalize: "none", spellcheck: String(tag !== "input"),
    minlength: schema.minLength, maxlength: schema.maxLength,
    required: Boolean(schema.minLength > 0 || schema["x-input"] || schema.format === "ipv4"),
  });
  input.defaultValue = value ?? "";
  const after = schema["x-secret"] && h("button", { type: "button", "aria-pressed": "false", onclick() {
    input.type = input.type === "text" ? "password" : "text";
    after.setAttribute("aria-pressed", String(input.type === "text"));
  }, "aria-label": "Show " + schema.title }, "Show");
  return { input, after, read: () => (input.value || isRequired || value !== undefined ? input.value : undefined) };
}

function check(schema, value) {
  const input = h("input", { type: "checkbox", checked: value === true });
  return { input, read: () => input.checked };
}

function number(schema, value, required) {
  const step = schema.type === "integer" ? 1 : "any";
  const input = h("input", { type: "number", min: schema.minimum, max: schema.maximum, step, required });
  input.defaultValue = value ?? "";
  const after = schema["x-unit"] && h("span", { class: "unit" }, schema["x-unit"]);
  return { input, after, read: () => (input.value === "" ? undefined : Number(input.value)) };
}

// The choices, and the value even if it is none of them.
function choicesWith(place, schema, values) {
  const choices = choicesOf(schema, place.database.value);
  return [...choices, ...values.filter((value) => !choices.some(([id]) => id === value)).map((value) => [value, value])];
}

function select(schema, value, isRequired, place) {
  const choices = choicesWith(place, schema, isRequired || value === undefined ? [value] : [undefined, value]);
  const options = choices.map(([, label], i) => h("option", { value: label === undefined ? "" : i }, label));
  const input = h("select", { required: isRequired }, options);
  input.selectedIndex = choices.findIndex(([id]) => id === value);
  return { input, read: () => choices[input.selectedIndex]?.[0] };
}

// What makes the input of a value: the first that fits.
const KINDS = [
  [(schema) => schema.type === "boolean", check],
  [isChoice, select],
  [(schema) => schema.type === "integer" || schema.type === "number", number],
  [(schema) => schema.maxLength >= 200 && !schema.format, (...each) => text(...each, "textarea")],
  [() => true, text],
];

// The members of an object. Inside another one it can be folded, and is on a small screen.
function group(place, schema, value, path) {
  const isInside = path !== place.path && !isRow(stepsOf(path).at(-1));
  const open = place.isRow || matchMedia("(min-width: 48rem)").matches;
  const node = isInside ? h("details", { class: "group", open, "data-path": path }, h("summary", {}, schema.title),
    schema.description && h("p", { class: "hint" }, schema.description)) : h("div", { class: "members" });
  const members = new Map(Object.keys(schema.properties).map((name) => [name, controlFor(place,
    schemaIn(place.database.schema, schema, name), value?.[name], join(path, name), schema.required?.includes(name))]));
  const all = [...members.values()];
  node.append(...all.map((member) => member.node));
  const control = {
    node,
    read: () => Object.fromEntries([...members].map(([name, member]) => [name, member.read()])
      .filter(([, read]) => read !== undefined)),
    check: () => all.map((member) => member.check()).find(Boolean) ?? null,
    find: ([step, ...rest]) => members.get(step)?.find(rest) ?? control,
    focus: () => (isInside ? node.querySelector("summary") : all[0])?.focus(),
  };
  return withFault(control);
}

// An array of choices: a check box each.
function checks(place, schema, value = [], path) {
  const boxes = choicesWith(place, itemsOf(place, schema), value).map(([id, label]) =>
    ({ id, label, input: h("input", { type: "checkbox", checked: value.includes(id) }) }));
  const node = h("fieldset", { class: "field checks", "data-path": path }, h("legend", {}, schema.title),
    boxes.map(({ label, input }) => h("label", { class: "control" }, input, label)));
  const read = () => boxes.filter(({ input }) => input.checked).map(({ id }) => id);
  return whole(schema, node, read, () => boxes[0]?.input.focus(), []);
}

// An array whose elements are part of the form: they can be added and removed.
function list(place, schema, value = [], path) {
  const inner = { title: schema.title, ...itemsOf(place, schema) };
  const items = [];
  const rows = h("div");
  const changed = () => node.dispatchEvent(new Event("input", { bubbles: true }));
  const append = (item) => {
    const control = controlFor({ ...place, isRow: true }, inner, item, join(path, `[${items.length}]`));
    const line = h("div", { class: "item" }, control.node, h("button", { type: "button", onclick() {
      items.splice(items.indexOf(control), 1);
      line.remove();
      add.focus();
      changed();
    }, "aria-label": "Remove " + inner.title }, "Remove"));
    items.push(control);
    rows.append(line);
    return control;
  };
  const add = h("button", { type: "button", onclick: () => (append().focus(), changed()) },
    "Add to " + schema.title.toLowerCase());
  const node = h("fieldset", { class: "field list", "data-path": path }, h("legend", {}, schema.title), rows, add);
  value.forEach(append);
  return whole(schema, node, () => items.map((item) => item.read()), () => (items[0] ?? add).focus(), items);
}

// An array as one control.
function whole(schema, node, read, focus, items) {
  const control = {
    node, read, focus,
    find: ([step = "", ...rest]) => items[step.slice(1, -1)]?.find(rest) ?? control,
    check() {
      const inside = items.map((item) => item.check()).find(Boolean);
      const few = read().length < schema.minItems && `At least ${schema.minItems} is needed.`;
      const fault = few || (read().length > schema.maxItems ? `At most ${schema.maxItems} are possible.` : "");
      control.mark(fault);
      return inside ?? (fault ? control : null);
    },
  };
  return withFault(control);
}
