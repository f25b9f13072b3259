// A form that saves what its controls change: questions, refusals at their places, changes made elsewhere.
import { Refusal, databases, isAdministrator, send } from "./gateway.js";
import { announce, ask, h } from "./dom.js";
import { addressOf, go, rename, showAgain } from "./router.js";
import {
  NEW, difference, isEqual, isIndex, isRow, join, merged, nameOf, parentOf, placesOf, schemaAt, stepsOf, textOf, titleOf, valueAt,
} from "./schema.js";

// The view of a place with its control. What has changed is saved; a new row is appended, and has a place from then on.
export function editView(type, path, control) {
  let base = databases[type].value; // the document that the control shows
  let saved = control.read();
  let [current, isSaving] = [path, false];
  const isNew = () => current.endsWith(NEW);
  const change = () => difference(saved, control.read());
  const isDirty = () => change() !== undefined;

  const state = h("p", { class: "state" });
  const fault = h("p", { role: "alert", class: "fault", tabindex: -1 });
  const say = (text, problem = "") => {
    [state.textContent, fault.textContent] = [text, problem];
    announce("");
    form.classList.toggle("dirty", isDirty());
  };
  const again = () => go(location.hash, true);
  const cancel = () => (isNew() ? go(addressOf(type, parentOf(path)), true) : again());
  const remove = isRow(stepsOf(path).at(-1)) && removal(type, () => current, () => base, { isOwn: true, hidden: isNew() });
  const canEdit = isAdministrator() && control.node.querySelector("input, select, textarea, .list");
  const form = h("form", {
    novalidate: true, onsubmit: (event) => (event.preventDefault(), save()),
    oninput: () => isSaving || say(isDirty() ? "Not saved" : ""),
  }, control.node, fault, canEdit && h("div", { class: "bar" }, h("button", { class: "main" }, "Save"),
    h("button", { type: "button", onclick: cancel }, "Cancel"), remove, state),
  !isAdministrator() && h("p", { class: "hint" }, "Only an administrator can change this."));

  function showRefusal({ message, path: where }) {
    const [here, there] = [stepsOf(current), stepsOf(where)];
    const isAt = (step, i) => step === there[i] || (step === NEW && isIndex(there[i]));
    const at = where && here.every(isAt) ? control.find(there.slice(here.length)) : control;
    if (at === control) return say("Not saved", ["Not saved", where, message].filter(Boolean).join(": ")), fault.focus();
    say("Not saved");
    at.mark(message);
    goTo(at);
  }

  async function settle({ places }) {
    say("Not saved: changed elsewhere");
    const text = h("p", {}, "Somebody else has changed this since you opened it.");
    const answer = await ask("Changed elsewhere", [text, ...differences(type, places)],
      [["", "Go on editing"], ["reload", "Take what is there"], ["overwrite", "Save mine"]]);
    if (answer === "reload") again();
    return answer === "overwrite" && trySaving(true);
  }

  async function trySaving(overwrite) {
    const [now, body, wrong] = [control.read(), change(), control.check()];
    if (wrong) return say("Not saved: see the marked places"), goTo(wrong), false;
    if (body === undefined && !isNew()) return say("Nothing has changed"), true;
    if (!overwrite && !(await mayDisconnect(type, current, body))) return false;
    say("Saving ...");
    const target = isNew() ? { method: "POST", path: parentOf(path), body: now } : { method: "PATCH", path: current, body };
    const place = await send({ type, ...target }, base, overwrite);
    if (place !== current) rename(addressOf(type, place));
    document.querySelector("h1").textContent = titleOf(databases[type], place);
    document.title = titleOf(databases[type], place) + " – Home gateway";
    const others = !isNew() && !isEqual(merged(valueAt(base, current), body), valueAt(databases[type].value, place));
    [base, saved, current] = [databases[type].value, now, place];
    if (remove) remove.hidden = false;
    say(isDirty() ? "Saved; what was typed since then is not" : "Saved");
    announce(state.textContent);
    if (others && !isDirty()) showAgain(); // what others have changed beside it
    return true;
  }

  async function save() {
    if (isSaving) return false; // a second click
    isSaving = true;
    try {
      return await trySaving(false).catch((error) => (error.places ? settle(error) : Promise.reject(error)));
    } catch (error) {
      if (!(error instanceof Refusal)) throw error;
      showRefusal(error);
      return false;
    } finally {
      isSaving = false;
    }
  }

  return {
    node: form, type, isDirty, save, focusOn: (inside) => goTo(control.find(stepsOf(inside).slice(stepsOf(path).length))),
    isStale: () => !isEqual(valueAt(base, current), valueAt(databases[type].value, current)),
  };
}

function goTo(control) {
  for (let node = control.node; node; node = node.parentElement) if (node.tagName === "DETAILS") node.open = true;
  control.focus();
  control.node.scrollIntoView({ block: "center" });
}

// What others have set, beside what is about to be set.
function differences(type, places) {
  const text = (path, value) => textOf(schemaAt(databases[type].schema, path) ?? {}, value, databases[type]);
  return places.map(({ path, theirs, mine }) => h("p", {}, h("strong", {}, titleOf(databases[type], path)),
    `: there ${text(path, theirs)}, here ${text(path, mine)}`));
}

// Asks before a change at a place that the schema marks.
async function mayDisconnect(type, path, body) {
  const isCut = ([inside]) => schemaAt(databases[type].schema, join(path, inside))?.["x-disconnects"];
  const titles = path.endsWith(NEW) ? [] : placesOf(body).filter(isCut)
    .map(([inside]) => titleOf(databases[type], join(path, inside)));
  const text = `You may lose the connection to the gateway when this changes: ${titles.join(", ")}.`;
  return titles.length === 0 || (await ask("Save this?", text, [["", "Cancel"], ["save", "Save"]])) === "save";
}

// A button that removes a row or another place after a question.
export function removal(type, pathOf, baseOf, { isOwn, hidden } = {}) {
  const name = () => nameOf(valueAt(baseOf(), pathOf()));
  return h("button", { type: "button", class: "danger", hidden, "aria-label": !hidden && "Remove " + name(), async onclick() {
    const answers = [["", "Cancel"], ["remove", "Remove"]];
    if ((await ask(`Remove "${name()}"?`, "This cannot be undone.", answers)) !== "remove") return;
    try {
      await send({ type, method: "DELETE", path: pathOf() }, baseOf());
      announce("Removed");
      await go(addressOf(type, parentOf(pathOf())), isOwn);
    } catch (error) {
      await ask("Not removed", error.message, [["", "Close"]]);
    }
  } }, "Remove");
}
