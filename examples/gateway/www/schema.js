// Paths into a document, and what its schema says of the place at a path.

export const NEW = "[+]"; // the step of a row that is yet to be added
export const stepsOf = (path) => (path ? path.split(".") : []);
export const join = (path, inside) => [path, inside].filter(Boolean).join(".");
export const parentOf = (path) => stepsOf(path).slice(0, -1).join(".");
export const isIndex = (step) => /^\[\d+\]$/.test(step);
export const isRow = (step) => isIndex(step) || step === NEW;
export const isObject = (value) => value !== null && typeof value === "object" && !Array.isArray(value);
const keyOf = (step) => (isIndex(step) ? Number(step.slice(1, -1)) : step);

export function valueAt(value, path) {
  for (const step of stepsOf(path)) {
    if (value === null || typeof value !== "object" || !Object.hasOwn(value, keyOf(step))) return undefined;
    value = value[keyOf(step)];
  }
  return value;
}

// A copy of the document with the value at the path replaced, or removed if it is undefined.
export function withValue(document, path, value) {
  if (path === "") return value;
  const copy = structuredClone(document);
  const [container, key] = [valueAt(copy, parentOf(path)), keyOf(stepsOf(path).at(-1))];
  if (value !== undefined) container[key] = value;
  else if (Array.isArray(container)) container.splice(key, 1);
  else delete container[key];
  return copy;
}

export function isEqual(one, other) {
  if (one === null || other === null || typeof one !== "object" || typeof other !== "object") return one === other;
  const names = Object.keys(one);
  return Array.isArray(one) === Array.isArray(other) && names.length === Object.keys(other).length &&
    names.every((name) => Object.hasOwn(other, name) && isEqual(one[name], other[name]));
}

// The merge patch that makes `after` of `before`; undefined if they are equal.
export function difference(before, after) {
  if (!isObject(before) || !isObject(after)) return isEqual(before, after) ? undefined : after ?? null;
  const changes = Object.keys({ ...before, ...after }).map((name) => [name, difference(before[name], after[name])])
    .filter(([, change]) => change !== undefined);
  return changes.length > 0 ? Object.fromEntries(changes) : undefined;
}

export function merged(value, patch) {
  if (!isObject(patch)) return patch;
  const result = isObject(value) ? { ...value } : {};
  for (const [name, change] of Object.entries(patch)) {
    if (change === null) delete result[name];
    else result[name] = merged(result[name], change);
  }
  return result;
}

// The places that a merge patch changes, as pairs of path and new value.
export function placesOf(patch, path = "") {
  if (!isObject(patch)) return [[path, patch]];
  return Object.entries(patch).flatMap(([name, change]) => placesOf(change, join(path, name)));
}

// Where the place is now that the document has changed: rows are known by their id, or by all they hold.
// Null if it is gone.
export function moved(path, before, after) {
  let [was, is] = ["", ""];
  for (const step of stepsOf(path)) {
    const element = valueAt(before, join(was, step));
    const rows = valueAt(after, is);
    const isSame = (row) => (element.id === undefined ? isEqual(row, element) : row?.id === element.id);
    const isHere = !isIndex(step) || !isObject(element) || isSame(rows?.[keyOf(step)]);
    const index = isHere ? keyOf(step) : rows?.findIndex?.(isSame) ?? -1;
    if (index === -1) return null;
    [was, is] = [join(was, step), join(is, isHere ? step : `[${index}]`)];
  }
  return is;
}

// The schema with its references followed. Annotations beside a reference replace those of the definition.
export function resolved(root, schema) {
  while (schema.$ref) {
    const { $ref, ...own } = schema;
    schema = { ...root.definitions[$ref.replace("#/definitions/", "")], ...own };
  }
  return schema;
}

// The schema of a member or element. What holds for a container also holds for what is inside.
export function schemaIn(root, schema, step) {
  const inner = isRow(step) ? schema.items : schema.properties?.[step];
  const container = { readOnly: schema.readOnly, "x-disconnects": schema["x-disconnects"] };
  return inner ? { ...container, ...resolved(root, inner) } : null;
}

export function schemaAt(root, path) {
  return stepsOf(path).reduce((schema, step) => schema && schemaIn(root, schema, step), root);
}

export const isContainer = (schema) => schema?.type === "object" || schema?.type === "array";
export const isTable = (root, schema) => schema.type === "array" && resolved(root, schema.items).type === "object";

// What an enum or an "x-choice" offers, as pairs of value and label.
export function choicesOf(schema, document) {
  const unit = schema["x-unit"] ? " " + schema["x-unit"] : "";
  if (schema.enum) return schema.enum.map((value) => [value, schema["x-labels"]?.[value] ?? value + unit]);
  const rows = valueAt(document, schema["x-choice"]);
  return (Array.isArray(rows) ? rows : []).map((row) => [row.id, row.name ?? row.band ?? String(row.id)]);
}

const duration = (seconds) => [[86400, Infinity, "d"], [3600, 24, "h"], [60, 60, "min"]]
  .map(([length, most, unit]) => (Math.floor(seconds / length) % most) + " " + unit).join(" ");

// A value as a person reads it; `database` has the schema and the document around it.
export function textOf(schema, value, database) {
  if (value === undefined || value === null || value === "") return "–";
  if (schema["x-secret"]) return "••••••••";
  if (typeof value === "boolean") return value ? "Yes" : "No";
  if (Array.isArray(value)) {
    const items = schema.items ? resolved(database.schema, schema.items) : {};
    return value.map((item) => textOf(items, item, database)).join(", ") || "–";
  }
  if (isObject(value)) return Object.values(value).filter((member) => typeof member !== "object").join(" ");
  if (schema["x-choice"] || schema.enum) {
    return String(choicesOf(schema, database.value).find(([id]) => id === value)?.[1] ?? value);
  }
  if (schema["x-unit"] === "s" && schema.readOnly) return duration(value);
  if (schema["x-unit"]) return value.toLocaleString("en") + " " + schema["x-unit"];
  return schema.format === "date-time" && Date.parse(value) ? new Date(value).toLocaleString() : String(value);
}

export const textAt = (database, path) =>
  textOf(schemaAt(database.schema, path) ?? {}, valueAt(database.value, path), database);

// What a row is called.
export function nameOf(row) {
  return String(isObject(row) ? row.name ?? row.title ?? row.description ?? row.text ?? row.id ?? "" : row);
}

export function titleOf(database, path) {
  const last = stepsOf(path).at(-1) ?? "";
  const schema = schemaAt(database.schema, path);
  if (last === NEW) return "New " + (schema?.title ?? "entry").toLowerCase();
  return isIndex(last) ? nameOf(valueAt(database.value, path) ?? last) : schema?.title ?? last;
}
