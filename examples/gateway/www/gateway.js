// What the gateway answers: the databases as they were last read, and changes to them.
import { isEqual, join, merged, moved, placesOf, valueAt, withValue } from "./schema.js";

export let databases = {}; // by type: value, schema and etag, or an error
export let user = null;    // user, role, mustChangePassword
export const isAdministrator = () => user?.role === "administrator";

// What the gateway did not do, and why. The status is 0 if it did not answer; `path` is where the fault is. A change
// that would undo another one has `places`, with the values there and here.
export class Refusal extends Error {
  constructor(status, { error, path, places }, retryAfter) {
    super(error);
    Object.assign(this, { status, path, places, retryAfter });
  }
}

async function exchange(method, url, body, headers = {}) {
  const options = { method, headers, signal: AbortSignal.timeout(30000) };
  if (body !== undefined) {
    options.body = JSON.stringify(body);
    options.headers = { ...headers, "Content-Type": "application/json" };
  }
  try {
    const answer = await fetch(url, options);
    const text = await answer.text();
    const isJson = text && answer.headers.get("Content-Type")?.startsWith("application/json");
    const content = isJson ? JSON.parse(text) : text || undefined;
    if (answer.ok) return { body: content, etag: answer.headers.get("ETag") };
    const reason = isJson ? content : { error: answer.statusText };
    throw new Refusal(answer.status, reason, Number(answer.headers.get("Retry-After")));
  } catch (error) {
    if (error instanceof Refusal) throw error;
    const unknown = method === "GET" ? "" : " Whether the change was made is not known.";
    throw new Refusal(0, { error: "The gateway does not answer." + unknown });
  }
}

let logInAgain;
export const onExpired = (action) => (logInAgain = action);

// An exchange that logs in again when the session has ended, and comes back when the gateway is busy.
export async function request(method, url, body, headers) {
  for (let tries = 0; ; tries++) {
    try {
      return await exchange(method, url, body, headers);
    } catch (refusal) {
      if (refusal.status === 401 && !/^\/log(in|out)$/.test(url)) await logInAgain();
      else if (refusal.status !== 503 || tries === 5) throw refusal;
      else await new Promise((resolve) => setTimeout(resolve, 1000 * Math.min(refusal.retryAfter || 1, 10)));
    }
  }
}

export async function logIn(username, password) {
  const { body } = await request("POST", "/login", { username, password });
  user = { ...body, user: username };
}

// Who is logged in, if anyone is.
export const whoAmI = () => exchange("GET", "/api/me").then(({ body }) => (user = body), () => null);

// Everything that the page needs, in two requests at the same time. Nothing but "me" while a password must be changed.
export async function loadAll() {
  const all = request("GET", "/api/all").catch((refusal) => (refusal.status === 403 ? {} : Promise.reject(refusal)));
  user = (await request("GET", "/api/me")).body;
  databases = Object.fromEntries(Object.entries((await all).body ?? {}).filter(([, { schema }]) => schema)); // or not shown
}

const urlOf = (type, path) => "/api/" + type + "/" + encodeURIComponent(path);

// Reads a database again. True if it has changed.
export async function reload(type) {
  const before = databases[type];
  const { body, etag } = await request("GET", urlOf(type, ""));
  if (databases[type] === before) databases[type] = { ...before, value: body, etag }; // else this is older
  return databases[type].etag !== before.etag;
}

// The places that the change would set and that others have set meanwhile to something else.
function conflicts({ type, method, path, body }, base, now) {
  const places = method === "POST" ? [] : placesOf(body);
  return places.map(([inside, mine]) => ({
    path: join(now, inside), mine,
    before: valueAt(base, join(path, inside)),
    theirs: valueAt(databases[type].value, join(now, inside)),
  })).filter(({ before, theirs, mine }) => !isEqual(before, theirs) && !isEqual(theirs, mine ?? undefined));
}

// Sends a change { type, method, path, body } made to the document `base`, and returns the path it was made at:
// rows may have moved. If others have changed the same places it is refused, unless it is to overwrite them.
export async function send(change, base, overwrite = false) {
  const { type, method, body } = change;
  for (let tries = 0; ; tries++) {
    const { value, etag } = databases[type];
    const path = moved(change.path, base, value);
    if (path === null) throw new Refusal(410, { error: "This has been changed or removed elsewhere." });
    const places = overwrite ? [] : conflicts(change, base, path);
    if (places.length > 0) throw new Refusal(412, { error: "This has been changed elsewhere.", places });
    try {
      return await keep(change, path, await request(method, urlOf(type, path), body, { "If-Match": etag }));
    } catch (refusal) {
      if (![409, 412].includes(refusal.status) || tries === 5 || !(await reload(type))) throw refusal;
    }
  }
}

// Makes the change to the document here as well, so that it need not be read again.
async function keep({ type, method, body }, path, answer) {
  const { schema, value } = databases[type];
  const place = method === "POST" ? join(path, `[${valueAt(value, path).length}]`) : path;
  const result = answer.body ?? (method === "PATCH" ? merged(valueAt(value, path), body) : body);
  if (answer.etag) databases[type] = { schema, value: withValue(value, place, result), etag: answer.etag };
  else await reload(type);
  return place;
}
