// The names of messages: their tables by API type and communication type, and the lookup in them.
#include "CommLabel.h"

#include <string.h>

#include "labels/GatewayLabels.h"
#include "labels/LabelTable.h"
#include "labels/MediashareLabels.h"
#include "labels/NetworkLabels.h"
#include "labels/PackedStrings.h"
#include "labels/QosLabels.h"
#include "labels/SecurityLabels.h"
#include "labels/ServiceLabels.h"
#include "labels/WifiLabels.h"

using namespace vobiutils;

char const* GATEWAY_LBL[89];
char const* WIFI_LBL[84];
char const* NETWORK_LBL[78];
char const* SECURITY_LBL[112];
char const* SERVICE_LBL[164];
char const* MEDIASHARE_LBL[60];
char const* QOS_LBL[20];

namespace {

struct Table {
    char const** labels;
    unsigned int size;
};

template <size_t N>
consteval Table table(char const* (&labels)[N], char const* const (&)[N]) {
    return {labels, N};
}

// By API type.
constexpr Table TABLES[] = {
    table(GATEWAY_LBL, GATEWAY_NAMES), table(WIFI_LBL, WIFI_NAMES),
    table(NETWORK_LBL, NETWORK_NAMES), table(SECURITY_LBL, SECURITY_NAMES),
    table(SERVICE_LBL, SERVICE_NAMES), table(MEDIASHARE_LBL, MEDIASHARE_NAMES),
    table(QOS_LBL, QOS_NAMES),
};

unsigned int const TABLE_COUNT = sizeof TABLES / sizeof TABLES[0];

constexpr auto NAMES = pack<GATEWAY_NAMES, WIFI_NAMES, NETWORK_NAMES, SECURITY_NAMES, SERVICE_NAMES,
                            MEDIASHARE_NAMES, QOS_NAMES>();

// Fills the tables when the library is loaded, before any other code of the process can read or
// change one. A shared library is initialized before the program that uses it. In a static build
// the priority (the first one that is not the compiler's own) puts this before all ordinary static
// initializers.
[[gnu::constructor(101)]] void fillTables() {
    char const* name = NAMES.data();
    for (Table const& table : TABLES) {
        for (unsigned int i = 0; i < table.size; ++i) {
            table.labels[i] = name;
            name += strlen(name) + 1;
        }
    }
}

// Null for an API type without messages and for an index past the end of its table.
char const* const* entry(unsigned int apiType, unsigned int commType) {
    if (apiType >= TABLE_COUNT || commType >= TABLES[apiType].size) {
        return nullptr;
    }
    return &TABLES[apiType].labels[commType];
}

}  // namespace

char const* vobiutils::labelAt(unsigned int apiType, unsigned int commType) {
    char const* const* const label = entry(apiType, commType);
    return label != nullptr ? *label : nullptr;
}

char const* COMM_LABEL(unsigned int apiType, unsigned int commType) {
    char const* const* const label = entry(apiType, commType);
    return label != nullptr ? *label : "unknown";
}

int COMM_TYPE(unsigned int apiType, char const* label) {
    for (unsigned int i = 0; label != nullptr; ++i) {
        char const* const* const name = entry(apiType, i);
        if (name == nullptr) {
            break;
        }
        if (*name != nullptr && strcmp(*name, label) == 0) {
            return static_cast<int>(i);
        }
    }
    return -1;
}
