// Drives the page as a user would, inside the browser. Ends with the list of what went wrong.
const done = arguments[arguments.length - 1];
const failures = [];
const PASSWORD = "another-admin-password";
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
  await checkAccess();
}

async function save(what, values, wanted = "Saved") {
  for (const [path, text] of Object.entries(values)) type(at(path).querySelector("input, select"), text);
  find("main form").requestSubmit();
  await waitFor(what, () => {
    find('#question[open] [value="save"]')?.click(); // it may cut the connection
    return textOf(".state").startsWith(wanted);
  });
}

const send = (method, path, body) => fetch(path, {
  method, body: JSON.stringify(body), headers: { "Content-Type": "application/json" },
});

async function answer(value, what) {
  await waitFor(what, () => find(`#question[open] [value="${value}"]`));
  find(`#question [value="${value}"]`).click();
}

async function checkAccess() {
  if (!window.axe) return;
  const { violations } = await axe.run();
  for (const { impact, id, nodes } of violations) {
    if (["serious", "critical"].includes(impact)) failures.push(`${location.hash} ${id}: ${nodes[0].html}`);
  }
}

async function drive() {
  location.hash = "#/wifi/country"; // opens after the login and the new password
  await waitFor("the login", () => find("#login[open]"));
  await logIn("guessed");
  await waitFor("a wrong password is refused", () => textOf("#login-reason").includes("wrong"));
  await logIn("sample-admin-password");
  await waitFor("a new password is asked for", isAt("Change password"));
  await checkAccess();
  const texts = ["sample-admin-password", PASSWORD, PASSWORD];
  document.querySelectorAll("main [type=password]").forEach((input, i) => type(input, texts[i]));
  find("main form").requestSubmit();
  await waitFor("the view of the address", isAt("Wi-Fi"));

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

  await open("#/network/lan", "Local network (LAN)");
  await send("PATCH", "/api/network/lan", { domain: "theirs.example.net" });
  type(at("lan.hostname").querySelector("input"), "own");
  find("main form").requestSubmit();
  await waitFor("both changes are shown", () => at("lan.domain").querySelector("input").value === "theirs.example.net");
  if (at("lan.hostname").querySelector("input").value !== "own") failures.push("one's own change is shown");
  await send("PATCH", "/api/network/lan", { domain: "others.example.net" });
  type(at("lan.domain").querySelector("input"), "own.example.net");
  find("main form").requestSubmit();
  await answer("overwrite", "both values are shown");
  await waitFor("the own one is saved", () => textOf(".state") === "Saved");

  await send("POST", "/logout");
  type(at("lan.domain").querySelector("input"), "last.example.net");
  find("main form").requestSubmit();
  await waitFor("the login in place", () => find("#login[open]"));
  await logIn(PASSWORD);
  await waitFor("what was typed is saved", () => textOf(".state") === "Saved");

  await open("#/wifi/guest", "Guest network");
  find(".switch").click();
  await waitFor("the guest network is off", () => textOf(".switch").endsWith("off"));
  await open("#/audit", "Changes and logins");
  await waitFor("times and places of changes", () => /\d:\d\d.*POSTguest/.test(textOf("tbody tr")));
  await open("#/log", "Log");
  await open("#/expert", "Expert view");
  await open("#/search/wifi", "Search");
  if (!find('.hits [href="#/wifi/"]')) failures.push("wifi finds Wi-Fi");
  await open("#/toString", "There is nothing at this address.");
  await open("#/service/portForwarding", "Port forwarding"); // the one in pictures
}

drive().catch((error) => failures.push(String(error))).then(() => done(failures));
