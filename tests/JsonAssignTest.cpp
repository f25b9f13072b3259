#include <stdlib.h>
#include <string.h>

#include "JsonData.h"
#include "JsonRef.h"
#include "Support.h"

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

TEST_F(JsonAssignTest, StoresAndCreatesWhatIsMissing) {
    struct {
        char const* before;
        char const* path;
        int result;
        char const* after;
        char const* complaint;
    } const rows[] = {
        {"{}", "a.b", 0, "{'a':{'b':'v'}}", ""},
        {"{}", "a.", 0, "{'a':'v'}", ""},
        {"{}", "a..b", 0, "{'a':{'':{'b':'v'}}}", ""},
        {"{'a':{'b':1,'c':2}}", "a.b", 0, "{'a':{'b':'v','c':2}}", ""},
        {"{}", "a.[0]", 0, "{'a':['v']}", ""},
        {"{'x':1}", "a.[5].x", 0, "{'x':1,'a':[{'x':'v'}]}", ""},
        {"{}", "a.[0].[0]", 0, "{'a':[['v']]}", ""},
        {"{'a':[1,2]}", "a.[1]", 0, "{'a':[1,'v']}", ""},
        {"{'a':[1,2]}", "a.[2]", 0, "{'a':[1,2,'v']}", ""},
        {"{'a':[1,2]}", "a.[9]", 0, "{'a':[1,2,'v']}", ""},
        {"{'a':[1,2]}", "a.[-1]", 0, "{'a':[1,2,'v']}", ""},
        {"{'a':[{'b':1}]}", "a.[0].c", 0, "{'a':[{'b':1,'c':'v'}]}", ""},
        {"[]", "name", 0, "[{'name':'v'}]",
         "WARN: JsonData::setJObj: setting an TMO into an array, append it to the array by "
         "default\n"},
        {"[1]", "a.b.", 0, "[1,{'a':{'b':'v'}}]",
         "WARN: JsonData::setJObj: setting an TMO into an array, append it to the array by "
         "default\n"},
        {"[1]", "[0]", 0, "['v']", ""},
        {"[1]", "[7].[0]", 0, "[1,['v']]", ""},
        {"{'a':'x'}", "a.[0]", 2, "{'a':'x'}",
         "ERROR: JsonData::setJObj: existing object is not array 'a'\n"},
        {"{}", "[0]", 2, "{}", "ERROR: JsonData::setJObj: existing object is not array ''\n"},
        {"{'a':null}", "a.[0]", 2, "{'a':null}",
         "ERROR: JsonData::setJObj: existing object is not array 'a'\n"},
        {"{}", "a.b.[", 2, "{'a':{'b':{}}}", "ERROR: JsonData::setJObj: wrong array format [\n"},
        {"{'a':[null]}", "a.[0].b", 2, "{'a':[null]}",
         "ERROR: JsonData::setJObj: cannot get array element at idx=0 'a.[0]'\n"},
        {"{'a':[1]}", "a.b", 2, "{'a':[1]}",
         "ERROR: JsonData::setJObj: fail to add jval 'b' to jcrr=PTR jprt=PTR\n"},
        {"{'a':null}", "a.b", 2, "{'a':null}",
         "ERROR: JsonData::setJObj: fail to add jval 'b' to jcrr=NIL jprt=PTR\n"},
        {"{'a':5}", "a.b.c", 2, "{'a':5}",
         "ERROR: JsonData::setJObj: fail to add new object 'b'\n"},
        {"{}", "", 2, "{}", "ERROR: JsonData::setJObj: wrong params jobj=PTR path=PTR\n"},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(std::string(row.before) + " " + row.path);
        JsonRef const root(json(row.before));
        JsonRef const value(json("'v'"));
        EXPECT_EQ(set(root.get(), row.path, value.get()), row.result);
        EXPECT_EQ(text(root.get()), row.after);
        EXPECT_EQ(linesOf(lines_, "ERROR WARN"), row.complaint);
    }
}

TEST_F(JsonAssignTest, SaysEachStep) {
    JsonRef const root(json("{'l': [{'m': 1}]}"));
    JsonRef const value(json("'v'"));
    set(root.get(), "a.[5].x", value.get());
    EXPECT_EQ(lines_,
              "DEBUG: setJObj: Parse: idx=0 key=a isEnd=false\n"
              "DEBUG: JsonData::setJObj: get child object at '.a' isNew=true\n"
              "DEBUG: JsonData::setJObj: create new empty jchl to current object .a\n"
              "DEBUG: setJObj: Parse: idx=1 key=[5] isEnd=false\n"
              "DEBUG: setJObj: recreate array object 'a' delete PTR=1\n"
              "DEBUG: JsonData::setJObj: add new array element at 5 'a.[5]'\n"
              "DEBUG: setJObj: Parse: idx=2 key=x isEnd=true\n"
              "DEBUG: JsonData::setJObj: set jval to current object jcrr=PTR jval=PTR [5].x\n"
              "DEBUG: setJObj: FOUND parent=PTR key=x\n");
    set(root.get(), "l.[0].m", value.get());
    EXPECT_EQ(lines_,
              "DEBUG: setJObj: Parse: idx=0 key=l isEnd=false\n"
              "DEBUG: JsonData::setJObj: get child object at '.l' isNew=false\n"
              "DEBUG: setJObj: Parse: idx=1 key=[0] isEnd=false\n"
              "DEBUG: JsonData::setJObj: get array element at idx=0, 'l.[0]'\n"
              "DEBUG: setJObj: Parse: idx=2 key=m isEnd=true\n"
              "DEBUG: JsonData::setJObj: set jval to current object jcrr=PTR jval=PTR [0].m\n"
              "DEBUG: setJObj: FOUND parent=PTR key=m\n");
    set(root.get(), "l.[0]", value.get());
    EXPECT_EQ(linesOf(lines_, "DEBUG").substr(lines_.find("DEBUG: JsonData::setJObj: replace")),
              "DEBUG: JsonData::setJObj: replace array element at idx=0 'l.[0]'\n"
              "DEBUG: setJObj: FOUND parent=PTR key=[0]\n");
}

TEST_F(JsonAssignTest, ReportsContainerAndKeyOnSuccessOnly) {
    JsonRef const root(json("{'a': {'b': 1}, 's': 1}"));
    JsonRef const value(json("'v'"));
    json_object* parent = nullptr;
    char const* key = nullptr;
    printed([&] {
        EXPECT_EQ(JsonData::setJObj(root.get(), "s.x", value.get(), parent, key), 2);
        EXPECT_EQ(parent, nullptr);
        EXPECT_EQ(key, nullptr);
        EXPECT_EQ(JsonData::setJObj(root.get(), "a.b", value.get(), parent, key), 0);
        EXPECT_EQ(parent, JsonData::getJObj(root.get(), "a"));
        EXPECT_STREQ(key, "b");
        free(const_cast<char*>(key));
        EXPECT_EQ(JsonData::setJObj(root.get(), "a..", value.get(), parent, key), 0);
        EXPECT_STREQ(key, "");
        free(const_cast<char*>(key));
    });
}

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
    EXPECT_EQ(set(root.get(), "null", nullptr), 0);
    EXPECT_EQ(text(root.get()), "{'a':{'b':1},'l':[{'c':2}],'null':null}");
}

// "[0]." and the path share 255 characters.
TEST_F(JsonAssignTest, CutsThePathBehindARootArray) {
    struct {
        std::string path;
        std::string stored;
    } const rows[] = {
        {std::string(251, 'k'), std::string(251, 'k')},
        {std::string(252, 'k'), std::string(251, 'k')},
        {std::string(250, 'k') + ".x", std::string(250, 'k')},
    };
    for (auto const& row : rows) {
        JsonRef const root(json("[]"));
        JsonRef const value(json("1"));
        EXPECT_EQ(set(root.get(), row.path, value.get()), 0);
        EXPECT_EQ(text(root.get()), "[{'" + row.stored + "':1}]");
    }
}

TEST_F(JsonAssignTest, TakesPathsOfAThousandTokens) {
    JsonRef const root(json("{}"));
    JsonRef const value(json("'deep'"));
    std::string path = std::string(1000, 'n');
    for (int i = 0; i < 999; ++i) {
        path += i % 3 == 0 ? ".[0]" : ".m";
    }
    EXPECT_EQ(set(root.get(), path, value.get()), 0);
    printed([&] { EXPECT_EQ(JsonData::getJObj(root.get(), path.c_str()), value.get()); });
}

}  // namespace
