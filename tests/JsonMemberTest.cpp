// Finding members in objects of every size, by names of every length. The library compares the
// names of a few members one by one and hashes the name for more, and these ways must agree with
// json-c's.
#include <algorithm>

#include "JsonData.h"
#include "Logger.h"
#include "Support.h"
#include "jsondata/JsonRef.h"

using namespace vobiutils;

namespace {

using JsonMemberTest = LibraryTest;

std::string nameOf(int number) {
    size_t const lengths[] = {0, 127, 128, 300};
    std::string name = "n" + std::to_string(number);
    name.resize(std::max(name.size(), lengths[number % 4]), 'n');
    return name;
}

// Half of the members are added by the library and half by json-c; both must find all of them.
TEST_F(JsonMemberTest, AreFoundWhoeverAddedThem) {
    Logger::mask = 0;
    for (int count : {1, 6, 7, 8, 500}) {  // and one whose name is empty
        JsonRef const object(json("{'': {'v': -1}}"));
        for (int i = 0; i < count; ++i) {
            JsonRef const value(json_object_new_int(i));
            if (i % 2 == 0) {
                EXPECT_EQ(JsonData::setJObj(object.get(), (nameOf(i) + ".v").c_str(), value.get()),
                          0);
            } else {
                json_object* const member = json_object_new_object();
                json_object_object_add(member, "v", json_object_get(value.get()));
                json_object_object_add(object.get(), nameOf(i).c_str(), member);
            }
        }
        for (int i = 0; i < count; ++i) {
            json_object* const member = JsonData::getJObj(object.get(), nameOf(i).c_str());
            json_object* const value = JsonData::getJObj(object.get(), (nameOf(i) + ".v").c_str());
            EXPECT_EQ(json_object_object_get(object.get(), nameOf(i).c_str()), member);
            EXPECT_EQ(json_object_object_get(member, "v"), value);
            ASSERT_NE(value, nullptr);
            EXPECT_EQ(json_object_get_int(value), i);
        }
        EXPECT_EQ(json_object_get_int(JsonData::getJObj(object.get(), ".v")), -1);
        for (char const* const missing : {"n", "n.v", "n1n", "n1n.v", "n00", "n00.v", "m0.v"}) {
            EXPECT_EQ(JsonData::getJObj(object.get(), missing), nullptr) << missing;
        }
    }
}

}  // namespace
