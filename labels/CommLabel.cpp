// Looking up a message name by API type and communication type.
#include "CommLabel.h"

#include "LabelTable.h"

namespace {

struct Table {
    char const* const* labels;
    unsigned int size;
};

template <unsigned int N>
constexpr Table table(char const* (&labels)[N]) {
    return {labels, N};
}

// By API type.
Table const TABLES[] = {
    table(GATEWAY_LBL), table(WIFI_LBL),       table(NETWORK_LBL), table(SECURITY_LBL),
    table(SERVICE_LBL), table(MEDIASHARE_LBL), table(QOS_LBL),
};

unsigned int const TABLE_COUNT = sizeof TABLES / sizeof TABLES[0];

// Null for an API type without messages and an index past the end of its table.
char const* const* entry(unsigned int apiType, unsigned int commType) {
    if (apiType >= TABLE_COUNT || commType >= TABLES[apiType].size) {
        return nullptr;
    }
    return &TABLES[apiType].labels[commType];
}

}  // namespace

char const* labelAt(unsigned int apiType, unsigned int commType) {
    char const* const* const label = entry(apiType, commType);
    return label != nullptr ? *label : nullptr;
}

char const* COMM_LABEL(unsigned int apiType, unsigned int commType) {
    char const* const* const label = entry(apiType, commType);
    return label != nullptr ? *label : "unknown";
}
