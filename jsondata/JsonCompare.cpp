// Compares two primitive values.
#include <string.h>

#include "JsonData.h"
#include "logging/Log.h"

using namespace vobiutils;

namespace {

char const COMPARE[] = "compareObjVal";

bool equalDoubles(json_object* src, json_object* dst) {
    double const srcVal = json_object_get_double(src);
    double const dstVal = json_object_get_double(dst);
    UTIL_DEBUG("%s: srcVal= %f dstVal= %f\n", COMPARE, srcVal, dstVal);
    return srcVal == dstVal;
}

bool equalIntegers(json_object* src, json_object* dst) {
    long const srcVal = json_object_get_int(src);
    long const dstVal = json_object_get_int(dst);
    UTIL_DEBUG("%s: srcVal= %ld dstVal= %ld\n", COMPARE, srcVal, dstVal);
    return srcVal == dstVal;
}

bool equalStrings(json_object* src, json_object* dst) {
    char const* const srcVal = json_object_get_string(src);
    char const* const dstVal = json_object_get_string(dst);
    UTIL_DEBUG("%s: srcVal= %s dstVal= %s\n", COMPARE, srcVal, dstVal);
    return strcmp(srcVal, dstVal) == 0;
}

}  // namespace

bool JsonData::compareObjVal(json_object* src, json_type srcType, json_object* dst,
                             json_type dstType) {
    if (srcType != dstType || srcType == json_type_null) {
        UTIL_DEBUG("JSON type is different\n");
        return false;
    }
    if (src == nullptr || dst == nullptr) {
        return false;
    }
    switch (srcType) {
        case json_type_double: return equalDoubles(src, dst);
        case json_type_boolean:
        case json_type_int: return equalIntegers(src, dst);
        case json_type_string: return equalStrings(src, dst);
        default:
            UTIL_WARN("JSON type for the comparison MUST be primary types\n");
            return true;  // intended: two objects, or two arrays, count as a match
    }
}
