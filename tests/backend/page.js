// Drives the page as a user would, inside the browser. Ends with the list of what went wrong.
const done = arguments[arguments.length - 1];
const failures = [];
const element = (id) => document.getElementById(id);

async function waitFor(what, condition) {
  for (let i = 0; i < 2000; i++) {
    if (condition()) return true;
    await new Promise((resolve) => setTimeout(resolve, 50));
  }
  failures.push(what);
  return false;
}

async function logIn(password) {
  element("username").value = "admin";
  element("password").value = password;
  element("login").requestSubmit();
}

const leaf = (place) => document.querySelector(`[data-place="${place}"]`);

function openAll() {
  for (const part of document.querySelectorAll("details:not([open])")) part.open = true;
}

async function change(place, text) {
  leaf(place).click();
  const input = document.activeElement;
  input.value = text;
  input.dispatchEvent(new KeyboardEvent("keydown", { key: "Enter" }));
  return input;
}

const message = () => element("message").textContent;

async function drive() {
  await logIn("guessed");
  await waitFor("a wrong password is refused", () => message().includes("wrong user name"));
  await logIn("sample-admin-password");
  await waitFor("nine databases", () => document.querySelectorAll("#databases > details").length === 9);
  await waitFor("the trees open", () => {
    openAll();
    return leaf("wifi/ssids.[2].name") && leaf("network/lan.ipv4.dhcp.reservations.[0].options.leaseTime");
  });
  if (failures.length > 0) return;

  await change("wifi/ssids.[2].name", "garden");
  await waitFor("a change is saved", () => message().includes("is saved"));
  if (leaf("wifi/ssids.[2].name").textContent !== "garden") failures.push("the new value is shown");

  const input = await change("wifi/ssids.[2].security.passphrase", "short");
  await waitFor("a bad value is refused", () => message().includes("Refused"));
  await waitFor("the refusal is in the log", () => element("log").textContent.includes("refused"));
  input.dispatchEvent(new KeyboardEvent("keydown", { key: "Escape" }));
  const shown = leaf("wifi/ssids.[2].security.passphrase");
  if (!shown || shown.textContent === "short") failures.push("the old value is back");

  await change("gateway/led.brightness", "55");
  await waitFor("a number stays a number", () => message().includes("led.brightness is saved"));
}

drive().catch((error) => failures.push(String(error))).then(() => done(failures));
