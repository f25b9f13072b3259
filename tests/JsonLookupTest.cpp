#include <string.h>

#include <map>
#include <memory>
#include <sstream>

#include "JsonData.h"
#include "JsonRef.h"
#include "Support.h"

namespace {

class JsonLookupTest : public LibraryTest {
  protected:
    // The path of a node in the document, to name parents by.
    std::string place(json_object* node) {
        static std::map<std::string, char const*> const places = {
            {"root", ""}, {"net", "net"}, {"list", "net.list"}, {"list.[1]", "net.list.[1]"}};
        for (auto const& [name, path] : places) {
            if (node == JsonData::getJObj(document_.get(), path)) {
                return name;
            }
        }
        return node == nullptr ? "null" : "?";
    }

    JsonRef document_{
        json("{'net': {'name': 'x', 'list': [{'v': 'p'}, {'v': 'q'}, null], '': 7},"
             " 'mode': null}")};
};

char const COMPLAINT[] = "EXCEPTION: BE_StrTo: something unexpected happened";

// Lines other than those every walk has; the complaint, which has no line end, on a line of its
// own.
std::string ownLines(std::string transcript) {
    size_t const complaint = transcript.find(COMPLAINT);
    if (complaint != transcript.npos) {
        transcript.insert(complaint + strlen(COMPLAINT), "\n");
    }
    std::istringstream all(transcript);
    std::string result;
    for (std::string line; std::getline(all, line);) {
        bool const common = line.find("Parse:") != line.npos || line.find("FOUND") != line.npos ||
                            line.find("continue search next key") != line.npos;
        result += common ? "" : line + "\n";
    }
    return result;
}

TEST_F(JsonLookupTest, FindsValueParentAndKey) {
    struct {
        char const* path;
        char const* value;
        char const* parent;
        char const* key;
        char const* lines;
    } const rows[] = {
        {"net.name", "'x'", "net", "name", "DEBUG: getJObj: found the object name\n"},
        {"net.name.", "'x'", "net", "name", "DEBUG: getJObj: found the object name\n"},
        {"net.list.[1].v", "'q'", "list.[1]", "v", "DEBUG: getJObj: found the object v\n"},
        {"net.list.[1]", "{'v':'q'}", "list", "[1]", ""},
        {"net.list.[ 1 ]", "{'v':'q'}", "list", "[ 1 ]", ""},
        {"net.list.[12", "{'v':'q'}", "list", "[12", ""},
        {"net.list.[1x]", "{'v':'q'}", "list", "[1x]",
         "EXCEPTION: BE_StrTo: something unexpected happened\n"},
        {"net.list.[ ].v", "'p'", "?", "v",
         "EXCEPTION: BE_StrTo: something unexpected happened\n"
         "DEBUG: getJObj: found the object v\n"},
        {"net.list.[2]", "null", "net", "[2]", "ERROR: Cannot get array index num=2 len=3!\n"},
        {"net.list.[3]", "null", "net", "[3]", "ERROR: Request wrong index num=3 len=3!\n"},
        {"net.list.[-1]", "null", "net", "[-1]", "ERROR: Request wrong index num=-1 len=3!\n"},
        {"net.list.[]", "null", "net", "[]", "ERROR: Wrong array index [] - size:2\n"},
        {"net.size", "null", "root", "size", ""},
        {"net..", "7", "net", "null", "DEBUG: getJObj: found the object \n"},
        {"net.list.v", "null", "net", "v", ""},
        {"net.name.[0]", "null", "net", "[0]", "ERROR: Object is not array 'string'!\n"},
        {"mode", "null", "root", "mode", "DEBUG: getJObj: found the object mode\n"},
        {"none", "null", "root", "none", ""},
        {"nets.v", "null", "null", "null", "DEBUG: getJObj: cannot found the object nets.v\n"},
        {"mode.[0].v", "null", "null", "null",
         "ERROR: Object is not array 'null'!\n"
         "DEBUG: getJObj: cannot found the object mode.[0].v\n"},
        {"", "{'net':{'name':'x','list':[{'v':'p'},{'v':'q'},null],'':7},'mode':null}", "null",
         "null", ""},
    };
    json_object* const root = document_.get();
    for (auto const& row : rows) {
        SCOPED_TRACE(row.path);
        json_object* parent = nullptr;
        char const* key = nullptr;
        json_object* value = nullptr;
        std::string const lines =
            transcript([&] { value = JsonData::getJObj(root, row.path, parent, key); });
        std::unique_ptr<char const[]> const owned(key);
        EXPECT_EQ(text(value), row.value);
        if (row.parent[0] != '?') {
            std::string where;
            printed([&] { where = place(parent); });
            EXPECT_EQ(where, row.parent);
        }
        EXPECT_STREQ(key != nullptr ? key : "null", row.key);
        EXPECT_EQ(ownLines(lines), row.lines);
        std::string const again = transcript([&] { JsonData::getJObj(root, row.path); });
        EXPECT_EQ(again, lines);  // the short form says the same
    }
}

TEST_F(JsonLookupTest, SaysEachStep) {
    json_object* const root = document_.get();
    EXPECT_EQ(transcript([&] { JsonData::getJObj(root, "net.list.[1].v"); }),
              "DEBUG: getJObj: Parse: idx=0 key=net isEnd=false\n"
              "DEBUG: getJObj: continue search next key\n"
              "DEBUG: getJObj: Parse: idx=1 key=list isEnd=false\n"
              "DEBUG: getJObj: continue search next key\n"
              "DEBUG: getJObj: Parse: idx=2 key=[1] isEnd=false\n"
              "DEBUG: getJObj: Parse: idx=3 key=v isEnd=true\n"
              "DEBUG: getJObj: found the object v\n"
              "INFO: getJObj: FOUND parent=PTR, key=v\n");
    EXPECT_EQ(transcript([&] { JsonData::getJObj(root, "net.none.v"); }),
              "DEBUG: getJObj: Parse: idx=0 key=net isEnd=false\n"
              "DEBUG: getJObj: continue search next key\n"
              "DEBUG: getJObj: Parse: idx=1 key=none isEnd=false\n"
              "DEBUG: getJObj: cannot found the object net.none.v\n"
              "INFO: getJObj: FOUND parent=PTR, key=none\n");
    EXPECT_EQ(transcript([&] { JsonData::getJObj(root, ""); }), "");
}

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

// Few members are compared one by one, many through json-c's hash, and long names always one by
// one.
TEST_F(JsonLookupTest, FindsMembersInObjectsOfEverySize) {
    for (int count : {1, 10, 11, 500}) {
        JsonRef const object(json_object_new_object());
        auto const name = [](int i) {
            return (i % 2 != 0 ? std::string(300, 'n') : "n") + std::to_string(i);
        };
        for (int i = 0; i < count; ++i) {
            json_object_object_add(object.get(), name(i).c_str(), json_object_new_int(i));
        }
        printed([&] {
            for (int i = 0; i < count; ++i) {
                json_object* const value = JsonData::getJObj(object.get(), name(i).c_str());
                EXPECT_EQ(json_object_get_int(value), i);
                EXPECT_NE(value, nullptr);
            }
            EXPECT_EQ(JsonData::getJObj(object.get(), "n"), nullptr);
            EXPECT_EQ(JsonData::getJObj(object.get(), "n00"), nullptr);
        });
    }
}

TEST_F(JsonLookupTest, TakesPathsOfAnyLength) {
    std::string const oneToken(1 << 20, 'k');
    std::string manyTokens = "net";
    for (int i = 0; i < 100000; ++i) {
        manyTokens += ".[1]";
    }
    printed([&] {
        EXPECT_EQ(JsonData::getJObj(document_.get(), oneToken.c_str()), nullptr);
        EXPECT_EQ(JsonData::getJObj(document_.get(), manyTokens.c_str()), nullptr);
    });
}

}  // namespace
