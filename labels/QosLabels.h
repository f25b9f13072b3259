// Message names of the API type qos, in the order of their communication types.
#pragma once

namespace vobiutils {

inline constexpr char const* QOS_NAMES[] = {
    "QOS_CONFIGURATION_LIST_REQ",
    "QOS_CONFIGURATION_LIST_RESP",
    "QOS_CONFIGURATION_UPDATE_REQ",
    "QOS_CONFIGURATION_UPDATE_RESP",
    "QOS_RULES_CREATE_REQ",
    "QOS_RULES_CREATE_RESP",
    "QOS_RULES_CHANGE_REQ",
    "QOS_RULES_CHANGE_RESP",
    "QOS_RULES_DELETE_ONE_REQ",
    "QOS_RULES_DELETE_ONE_RESP",
    "QOS_RULES_DELETE_ALL_REQ",
    "QOS_RULES_DELETE_ALL_RESP",
    "QOS_SERVICE_LIST_REQ",
    "QOS_SERVICE_LIST_RESP",
    "QOS_SERVICE_INUSE_REQ",
    "QOS_SERVICE_INUSE_RESP",
    "QOS_IPTV_GET_REQ",
    "QOS_IPTV_GET_RESP",
    "QOS_IPTV_UPDATE_REQ",
    "QOS_IPTV_UPDATE_RESP",
};

}  // namespace vobiutils
