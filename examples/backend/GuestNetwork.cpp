// Switches the guest network, whose Wi-Fi, addresses and firewall are in three databases.
#include "Resources.h"

namespace {

// Returns the Wi-Fi network of the guests; null if there is none.
Node guestSsid(TreeMapObject& wifi) {
    Node const all(wifi.get("ssids"));
    int64_t const wanted = wifi.get<int64_t>("guest.ssidId");
    for (unsigned int i = 0; all != nullptr; ++i) {
        Node ssid(all->at(i));
        int64_t id = 0;
        if (ssid == nullptr || (ssid->get_ex("id", id) && id == wanted)) {
            return ssid;
        }
    }
    return nullptr;
}

// Switches every part. A refusal ends the transaction and undoes the parts switched so far.
void switchParts(LocalDbTransaction& wifi, bool isOn) {
    TreeMapObject* const addresses = wifi.also(API_NETWORK, "guest");
    TreeMapObject* const firewall = wifi.also(API_SECURITY, "guest");
    requireReadable(wifi);
    Node const ssid = guestSsid(*wifi.object());
    require(ssid != nullptr, 409, "guest.ssidId names no network");
    for (TreeMapObject* const part : {ssid.get(), addresses, firewall}) {
        bool wasOn = false;
        require(part->get_ex("enabled", wasOn), 500, "a part of the guest network is damaged");
        part->set("enabled", isOn);
    }
}

}  // namespace

Reply switchGuestNetwork(Request const& request) {
    Session const& session = *request.session;
    requireWritable({API_WIFI, "guest", session, {}});
    Node const wanted = parseBody(request.body);
    bool isOn = false;
    require(wanted->get_ex("enabled", isOn), 400,
            "the guest network needs \"enabled\": true or false");
    changeDatabase(
        API_WIFI, session, [&](LocalDbTransaction& wifi) { switchParts(wifi, isOn); },
        "the change could not be finished: read the databases again");
    session.seeSaved(API_NETWORK);
    session.seeSaved(API_SECURITY);
    return Reply{.status = 204};
}
