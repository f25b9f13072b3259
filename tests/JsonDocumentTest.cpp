// Documents from and to text and files.
#include <memory>

#include "JsonData.h"
#include "Logger.h"
#include "Support.h"
#include "TreeMapObject.h"
#include "jsondata/JsonRef.h"

using namespace vobiutils;

namespace {

typedef std::unique_ptr<TreeMapObject> Handle;

class JsonDocumentTest : public LibraryTest {};

TEST_F(JsonDocumentTest, ClonesNoDeeperThanTextIsRead) {
    JsonRef const tooDeep(json_object_new_array());
    json_object* inner = tooDeep.get();
    for (int i = 0; i < 40; ++i) {
        json_object_array_add(inner, json_object_new_array());
        inner = json_object_array_get_idx(inner, 0);
    }
    EXPECT_EQ(transcript([&] { EXPECT_EQ(JsonData::cloneObject(tooDeep.get()), nullptr); }),
              "DEBUG: cloneObject: clone json object PTR\n"
              "DEBUG: cloneObject: parser json to create new object\n"
              "ERROR: cloneObject: fail to create new object\n");
    EXPECT_EQ(transcript([] { EXPECT_EQ(JsonData::cloneObject(nullptr), nullptr); }),
              "ERROR: cloneObject: bad pobj param jobj=NIL\n");
}

TEST_F(JsonDocumentTest, DumpsWhatALongPathNames) {
    EXPECT_EQ(printedOnError([] { JsonData::dumpObject(nullptr, ""); }),
              "dumpObject: wrong params obj=(nil)\n");
    EXPECT_EQ(
        printedOnError([] { printed([] { TreeMapObject().dump(""); }); }).find("dumpObject: wr"),
        0U);
    std::string const longKey(300, 'k');
    TreeMapObject document("{}");
    printed([&] {
        document.set(longKey.c_str(), 1);
        EXPECT_EQ(printedOnError([&] { document.dump(longKey.c_str()); }),
                  "dumpObject: " + longKey + "\ntype=3\n1\n");
    });
}

TEST_F(JsonDocumentTest, FindsNullPointersUnequal) {
    for (json_type type : {json_type_string, json_type_int, json_type_double, json_type_object}) {
        EXPECT_FALSE(JsonData::compareObjVal(nullptr, type, nullptr, type));
        JsonRef const value(json("'1'"));
        EXPECT_FALSE(JsonData::compareObjVal(value.get(), type, nullptr, type));
    }
}

}  // namespace
