// The page: menu, search, login, and which view belongs to which address.
import { databases, isAdministrator, loadAll, logIn, onExpired, request, user, whoAmI } from "./gateway.js";
import { byId, h, heading } from "./dom.js";
import { placeOf, placeView } from "./place.js";
import { addressOf, go, start } from "./router.js";
import { isContainer, schemaAt, titleOf } from "./schema.js";
import { auditView, expertView, homeView, logView, passwordView, searchView } from "./views.js";

// The menu by task. The sections that it does not name follow under "More".
const TASKS = {
  "Internet": "network/wan network/dsl network/cable network/mobile service/ddns",
  "Wi-Fi": "wifi/ wifi/ssids wifi/radios wifi/schedule wifi/accessControl wifi/wps wifi/stations",
  "Guest network": "wifi/guest network/guest security/guest",
  "Home network": "network/lan gateway/devices network/routes service/wol",
  "Open to the Internet": "service/portForwarding service/portTriggering service/dmz service/upnp security/vpn",
  "Protection": "security/firewall security/parentalControl service/macFiltering service/ipFiltering security/login",
  "Traffic priority": "qos/ qos/classes qos/rules qos/bandwidth qos/iptv",
  "USB and media": "mediashare/usb mediashare/networkFolders mediashare/fileServer mediashare/mediaServer",
  "Gateway": "gateway/about gateway/users gateway/led gateway/dateTime gateway/powersave misc/notifications misc/backup",
};

function showMenu() {
  const all = Object.entries(databases).flatMap(([type, { schema }]) => ["", ...Object.keys(schema.properties)]
    .filter((name) => isContainer(schemaAt(schema, name))).map((name) => `${type}/${name}`));
  const named = Object.values(TASKS).join(" ").split(" ");
  const item = (hash, text) => h("li", {}, h("a", { href: hash }, text));
  const placeItem = ([type, path]) => item(addressOf(type, path), titleOf(databases[type], path));
  const group = (title, places) => h("details", { name: "menu" }, h("summary", {}, title),
    h("ul", {}, places.filter((place) => all.includes(place)).map((place) => placeItem(place.split("/")))));
  byId("menu").replaceChildren(h("ul", {}, item("#/", "Overview")),
    ...Object.entries(TASKS).map(([title, places]) => group(title, places.split(" "))),
    group("More", all.filter((place) => !named.includes(place) && !place.endsWith("/"))), h("ul", {},
    isAdministrator() && [item("#/audit", "Changes and logins"), item("#/log", "Log")],
    item("#/expert", "Expert view"), item("#/password", "Change password")));
}

// Marks where the address is in the menu, and closes that of a small screen.
function markMenu(hash) {
  const isAt = (link) => hash === link.hash || hash.startsWith(link.hash + ".") || (link.hash === "#/" && hash === "");
  byId("menu").querySelector("[aria-current]")?.removeAttribute("aria-current");
  const here = [...byId("menu").querySelectorAll("a")].findLast(isAt);
  here?.setAttribute("aria-current", "page");
  here?.closest("details")?.setAttribute("open", "");
  openMenu(false);
}

function openMenu(isOpen) {
  byId("menu").classList.toggle("open", isOpen);
  byId("menu-button").setAttribute("aria-expanded", String(isOpen));
}

const VIEWS = { "": homeView, search: searchView, expert: expertView, log: logView, audit: auditView, password: passwordView };

// As decodeURIComponent, but nothing is wrong with any text.
const decoded = (text) => new URLSearchParams("text=" + text.replace(/[+&]/g, encodeURIComponent)).get("text");

function viewOf(hash) {
  const [kind, first = ""] = hash.replace(/^#\/?/, "").split("/").map(decoded);
  document.body.classList.toggle("locked", user.mustChangePassword === true);
  if (user.mustChangePassword) return passwordView(enter);
  markMenu(hash);
  if (Object.hasOwn(VIEWS, kind)) return VIEWS[kind](first);
  if (!Object.hasOwn(databases, kind)) return { title: "Not there", node: heading("There is nothing at this address.") };
  const place = placeOf(kind, first);
  return { ...placeView(kind, place), inside: first === place ? "" : first };
}

// Logs in, in place; all that wait for a session wait for the same dialog.
const login = byId("login");
let [pending, isAsking] = [null, false];
function logInAgain() {
  const before = user?.user;
  pending ??= new Promise((resolve) => {
    const reason = "Your session has ended. What you have typed is still there: log in to go on.";
    byId("login-reason").textContent = before ? reason : "";
    byId("username").value ||= before ?? "";
    const open = () => (login.showModal(), byId(before ? "password" : "username").focus());
    login.returnValue = "";
    login.onclose = () => (login.returnValue === "in" ? resolve() : open()); // Escape does not help
    open();
  }).then(async () => {
    pending = null;
    if (before && (before !== user.user || user.mustChangePassword)) enter().then(() => go(location.hash));
  });
  return pending;
}

login.addEventListener("submit", async (event) => {
  event.preventDefault();
  if (isAsking) return; // a second click
  isAsking = true;
  byId("login-reason").textContent = "Logging in ...";
  try {
    await logIn(byId("username").value, byId("password").value);
    login.close("in");
  } catch (refusal) {
    byId("login-reason").textContent = refusal.message;
  }
  byId("password").value = "";
  isAsking = false;
});

// Another tab may have logged in meanwhile.
addEventListener("focus", async () => pending && !isAsking && (await whoAmI()) && login.close("in"));

async function enter() {
  await loadAll();
  showMenu();
  byId("user").hidden = false;
  byId("who").textContent = user.user;
}

byId("logout").addEventListener("click", async () => {
  if (await go("#/")) await request("POST", "/logout").finally(() => location.reload());
});
byId("menu-button").addEventListener("click", () => openMenu(!byId("menu").classList.contains("open")));
byId("search").addEventListener("submit", (event) => {
  event.preventDefault();
  go("#/search/" + encodeURIComponent(byId("query").value));
});

onExpired(logInAgain);
enter().then(() => start(viewOf), ({ message }) => byId("main").replaceChildren(heading("Not connected"), message, " ",
  h("p", {}, h("button", { type: "button", onclick: () => location.reload() }, "Try again"))));
