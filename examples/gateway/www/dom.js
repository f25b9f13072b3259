// Elements of the page: making them, asking a question, announcing a result.

export const byId = (id) => document.getElementById(id);

let lastId = 0;
export const newId = () => "e" + ++lastId;

// An element with attributes, listeners ("onclick") and children; those that are null or false are left out.
export function h(tag, attributes = {}, ...children) {
  const node = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (typeof value === "function") node.addEventListener(name.slice(2), value);
    else if (value !== undefined && value !== null && value !== false) node.setAttribute(name, value === true ? "" : value);
  }
  node.append(...children.flat().filter((child) => child || child === 0));
  return node;
}

export const heading = (text) => h("h1", { tabindex: -1 }, text);
export const headOf = (titles) => h("thead", {}, h("tr", {}, titles.map((title) => h(title ? "th" : "td", {}, title))));

// What a screen reader says, and everyone sees for a moment.
export function announce(text) {
  byId("status").textContent = text;
  clearTimeout(announce.timer);
  announce.timer = setTimeout(() => (byId("status").textContent = ""), 6000);
}

// Asks in a dialog. `answers` are pairs of value and label, the safe one first: Escape means that one.
export async function ask(title, content, answers) {
  const dialog = byId("question");
  if (dialog.open) return answers[0][0];
  byId("question-title").textContent = title;
  byId("question-text").replaceChildren(...[content].flat());
  byId("answers").replaceChildren(...answers.map(([value, label], i) =>
    h("button", { value, class: i > 0 && i === answers.length - 1 && "main" }, label)));
  dialog.returnValue = answers[0][0];
  dialog.showModal();
  await new Promise((resolve) => dialog.addEventListener("close", resolve, { once: true }));
  return dialog.returnValue;
}
