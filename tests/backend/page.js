// Drives the page as a user would, inside the browser. Ends with the list of what went wrong.
const done = arguments[arguments.length - 1];
const failures = [];
const find = (selector) => document.querySelector(selector);
const at = (path) => find(`main [data-path="${path}"]`);
const textOf = (selector) => find(selector)?.textContent ?? "";
const isAt = (title) => () => textOf("h1") === title && !find("dialog[open]");

async function waitFor(what, condition) {
  for (let i = 0; i < 1200; i++) {
    if (condition()) return true;
    await new Promise((resolve) => setTimeout(resolve, 50));
  }
  throw new Error(what);
}

function type(input, text) {
  input.value = text;
  input.dispatchEvent(new Event("input", { bubbles: true }));
}

async function logIn(password) {
  type(find("#username"), "admin");
  type(find("#password"), password);
  find("#login form").requestSubmit();
  find("#login form").requestSubmit(); // a second click
}

async function open(address, title) {
  location.hash = address;
  await waitFor(`${address} opens`, isAt(title));
}

async function save(what, values, wanted = "Saved") {
  for (const [path, text] of Object.entries(values)) type(at(path).querySelector("input, select"), text);
  find("main form").requestSubmit();
  await waitFor(what, () => {
    find('#question[open] [value="save"]')?.click(); // it may cut the connection
    return textOf(".state").startsWith(wanted);
  });
}

async function answer(value, what) {
  await waitFor(what, () => find(`#question[open] [value="${value}"]`));
  find(`#question [value="${value}"]`).click();
}

async function checkAccess() {
  const { violations } = await axe.run();
  for (const { impact, id, nodes } of violations) {
    if (["serious", "critical"].includes(impact)) failures.push(`${location.hash} ${id}: ${nodes[0].html}`);
  }
}

async function drive() {
  await waitFor("the login", () => find("#login[open]"));
  await logIn("guessed");
  await waitFor("a wrong password is refused", () => textOf("#login-reason").includes("wrong"));
  await logIn("sample-admin-password");
  await waitFor("the overview", () => isAt("Overview")() || isAt("Change password")());
  if (isAt("Change password")()) {
    const texts = ["sample-admin-password", "another-admin-password", "another-admin-password"];
    document.querySelectorAll("main input").forEach((input, i) => type(input, texts[i]));
    find("main form").requestSubmit();
    await waitFor("a new password", isAt("Overview"));
  }

  await open("#/wifi/ssids.[2]", "home-guest");
  await save("a change is saved", { "ssids.[2].name": "garden" });
  await save("a bad value is refused", { "ssids.[2].security.passphrase": "short" }, "Not saved");
  await waitFor("the reason is at its field", () => at("ssids.[2].security.passphrase").querySelector("[aria-invalid]"));
  location.hash = "#/service/portForwarding.rules";
  await answer("stay", "a question before leaving");
  await waitFor("the address is back", () => location.hash === "#/wifi/ssids.[2]");
  if (at("ssids.[2].security.passphrase").querySelector("input").value !== "short") failures.push("what was typed is there");
  location.hash = "#/service/portForwarding.rules.[+]";
  await answer("leave", "the question again");

  await waitFor("a new row", isAt("New rule"));
  const row = { name: "web", protocol: 1, externalPort: 8080, internalPort: 80, internalClient: "192.168.1.20" };
  const fields = Object.entries(row).map(([name, text]) => ["portForwarding.rules.[+]." + name, text]);
  await save("the row is saved", Object.fromEntries(fields));
  await waitFor("the row has its address", () => decodeURIComponent(location.hash).endsWith("rules.[6]"));
  find(".bar .danger").click();
  await answer("remove", "a question before a row is removed");
  await waitFor("the table again", isAt("Port forwarding"));
  if (document.querySelectorAll("tbody tr").length !== 6) failures.push("six rows are left");

  if (!window.axe) return;
  const views = { "#/expert": "Expert view", "#/network/lan": "Local network (LAN)", "#/wifi/ssids": "Networks" };
  for (const [address, title] of Object.entries(views)) {
    await open(address, title);
    await checkAccess();
  }
}

drive().catch((error) => failures.push(String(error))).then(() => done(failures));
