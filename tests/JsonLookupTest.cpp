// Look-up by path, on bare json-c values.
#include <algorithm>

#include "JsonData.h"
#include "Support.h"
#include "jsondata/JsonRef.h"

using namespace vobiutils;

namespace {

class JsonLookupTest : public LibraryTest {
  protected:
    JsonRef document_{
        json("{'net': {'name': 'x', 'list': [{'v': 'p'}, {'v': 'q'}, null], '': 7},"
             " 'mode': null}")};
};

TEST_F(JsonLookupTest, LeavesOutParametersAloneWithoutDocumentOrPath) {
    json_object* parent = document_.get();
    char const* key = "kept";
    EXPECT_EQ(transcript([&] { JsonData::getJObj(nullptr, "a", parent, key); }),
              "ERROR: getJObj: wrong params jobj=NIL path=PTR\n");
    EXPECT_EQ(transcript([&] { JsonData::getJObj(document_.get(), nullptr, parent, key); }),
              "ERROR: getJObj: wrong params jobj=PTR path=NIL\n");
    EXPECT_EQ(parent, document_.get());
    EXPECT_STREQ(key, "kept");
}

// Few members are compared one by one, more of them through json-c's hash, of the name in place at the
// end of a path, of a copy on the way; but a long name on the way always one by one.
TEST_F(JsonLookupTest, FindsMembersInObjectsOfEverySize) {
    for (int count : {1, 5, 6, 9, 10, 500}) {  // and one whose name is empty
        JsonRef const object(json("{'': {'v': -1}}"));
        auto const name = [](int i) {
            size_t const lengths[] = {0, 127, 128, 300};
            std::string text = "n" + std::to_string(i);
            text.resize(std::max(text.size(), lengths[i % 4]), 'n');
            return text;
        };
        for (int i = 0; i < count; ++i) {
            json_object* const member = json_object_new_object();
            json_object_object_add(member, "v", json_object_new_int(i));
            json_object_object_add(object.get(), name(i).c_str(), member);
        }
        printed([&] {
            for (int i = 0; i < count; ++i) {
                json_object* const member = JsonData::getJObj(object.get(), name(i).c_str());
                json_object* const value =
                    JsonData::getJObj(object.get(), (name(i) + ".v").c_str());
                EXPECT_EQ(json_object_object_get(member, "v"), value);
                EXPECT_EQ(json_object_get_int(value), i);
                EXPECT_NE(value, nullptr);
            }
            EXPECT_EQ(json_object_get_int(JsonData::getJObj(object.get(), ".v")), -1);
            for (char const* const missing : {"n", "n.v", "n1n", "n1n.v", "n00", "n00.v", "m0.v"}) {
                EXPECT_EQ(JsonData::getJObj(object.get(), missing), nullptr) << missing;
            }
        });
    }
}

}  // namespace
