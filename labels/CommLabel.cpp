// The message names by API type and communication type: their tables, and looking one up.
#include "CommLabel.h"

#include "labels/GatewayLabels.h"
#include "labels/LabelTable.h"
#include "labels/MediashareLabels.h"
#include "labels/NetworkLabels.h"
#include "labels/PackedTexts.h"
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
    table(GATEWAY_LBL, GATEWAY_TEXTS), table(WIFI_LBL, WIFI_TEXTS),
    table(NETWORK_LBL, NETWORK_TEXTS), table(SECURITY_LBL, SECURITY_TEXTS),
    table(SERVICE_LBL, SERVICE_TEXTS), table(MEDIASHARE_LBL, MEDIASHARE_TEXTS),
    table(QOS_LBL, QOS_TEXTS),
};

unsigned int const TABLE_COUNT = sizeof TABLES / sizeof TABLES[0];

constexpr auto TEXTS = pack<GATEWAY_TEXTS, WIFI_TEXTS, NETWORK_TEXTS, SECURITY_TEXTS, SERVICE_TEXTS,
                            MEDIASHARE_TEXTS, QOS_TEXTS>();

// When the library is loaded, before anybody reads or changes a table.
[[gnu::constructor]] void fillTables() {
    char const* text = TEXTS.chars;
    unsigned char const* size = TEXTS.sizes;
    for (Table const& table : TABLES) {
        for (unsigned int i = 0; i < table.size; ++i) {
            table.labels[i] = text;
            text += *size++;
        }
    }
}

// Null for an API type without messages and an index past the end of its table.
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
