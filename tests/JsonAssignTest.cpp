// Assignment by path, on bare json-c values.
#include <stdlib.h>
#include <string.h>

#include "JsonData.h"
#include "Support.h"
#include "jsondata/JsonRef.h"

using namespace vobiutils;

namespace {

class JsonAssignTest : public LibraryTest {
  protected:
    int set(json_object* root, std::string const& path, json_object* value) {
        int result = -1;
        lines_ = transcript([&] { result = JsonData::setJObj(root, path.c_str(), value); });
        return result;
    }

    std::string lines_;
};

TEST_F(JsonAssignTest, TakesAReferenceOnlyWhenStored) {
    JsonRef const root(json("{'s': 1}"));
    json_object* const value = json("{'v': 1}");
    EXPECT_EQ(set(root.get(), "s.x", value), 2);
    EXPECT_EQ(json_object_put(value), 1);  // the last reference
    json_object* const stored = json("{'v': 1}");
    EXPECT_EQ(set(root.get(), "list.[0]", stored), 0);
    EXPECT_EQ(json_object_put(stored), 0);
    EXPECT_EQ(text(root.get()), "{'s':1,'list':[{'v':1}]}");
}

TEST_F(JsonAssignTest, LetsAValueTakeItsOwnPlace) {
    JsonRef const root(json("{'a': {'b': 1}, 'l': [{'c': 2}]}"));
    for (char const* path : {"a", "l", "l.[0]"}) {
        json_object* value = nullptr;
        printed([&] { value = JsonData::getJObj(root.get(), path); });
        EXPECT_EQ(set(root.get(), path, value), 0) << path;
    }
    EXPECT_EQ(text(root.get()), "{'a':{'b':1},'l':[{'c':2}]}");
    EXPECT_EQ(set(root.get(), "a", root.get()), 2);  // nor its own member
    EXPECT_EQ(set(root.get(), "new", root.get()), 2);
    EXPECT_EQ(set(root.get(), "null", nullptr), 0);
    EXPECT_EQ(text(root.get()), "{'a':{'b':1},'l':[{'c':2}],'null':null}");
}

TEST_F(JsonAssignTest, AddsMembersThatJsonCFinds) {
    JsonRef const root(json("{}"));
    for (int count = 0; count < 40; ++count) {
        std::string const name = "member" + std::to_string(count);
        JsonRef const value(json_object_new_int(count));
        ASSERT_EQ(set(root.get(), count % 2 != 0 ? name : name + ".v", value.get()), 0);
        for (int i = 0; i <= count; ++i) {
            EXPECT_TRUE(json_object_object_get_ex(root.get(),
                                                  ("member" + std::to_string(i)).c_str(), nullptr));
        }
    }
}

}  // namespace
