// Addresses: which view is shown, and the question before what was typed is lost.
import { reload } from "./gateway.js";
import { announce, ask, byId } from "./dom.js";

let makeView; // of an address: { title, node } and, as it has them, type, isStale, isDirty, save, focusOn
let view = null;
let address = "";

export const addressOf = (type, path) => `#/${type}/${encodeURIComponent(path)}`;

export function start(viewOf) {
  makeView = viewOf;
  addEventListener("hashchange", () => go(location.hash));
  addEventListener("beforeunload", (event) => view.isDirty?.() && event.preventDefault());
  document.addEventListener("visibilitychange", () => document.hidden || refresh());
  show(location.hash);
}

// The view has another address from now on.
export function rename(hash) {
  address = hash;
  history.replaceState(null, "", hash);
}

async function mayLeave() {
  if (!view?.isDirty?.()) return true;
  const answers = [["stay", "Stay here"], ["leave", "Discard"], ["save", "Save"]];
  const answer = await ask("Leave without saving?", "What you have changed here is not saved.", answers);
  return answer === "leave" || (answer === "save" && (await view.save()));
}

// Goes to an address, also to the present one to show it anew. False if what was typed is to be kept.
export async function go(hash, isForced = false) {
  const canLeave = isForced || (await mayLeave());
  const wanted = canLeave ? hash : address;
  if (location.hash !== wanted) history.pushState(null, "", wanted);
  if (canLeave) show(hash);
  return canLeave;
}

// Shows the view of an address, and goes to the place inside that the address names.
function show(hash, inside) {
  address = hash;
  view = makeView(hash);
  byId("main").replaceChildren(view.node);
  document.title = view.title + " – Home gateway";
  scrollTo(0, 0);
  if (inside ?? view.inside) view.focusOn?.(inside ?? view.inside);
  else if (inside === undefined) byId("main").querySelector("h1").focus({ preventScroll: true });
  refresh();
}

// The focus stays at its place.
export function showAgain() {
  show(address, document.activeElement.closest("[data-path]")?.dataset.path ?? "");
}

// Looks whether the gateway has something newer. What is being typed stays.
async function refresh() {
  const shown = view;
  if (!shown.isStale) return;
  try {
    await reload(shown.type);
  } catch (error) {
    announce(error.message);
  }
  if (shown === view && shown.isStale() && !shown.isDirty?.()) showAgain();
}
