#include <memory>

#include "JsonData.h"
#include "JsonRef.h"
#include "Logger.h"
#include "Support.h"
#include "TreeMapObject.h"

namespace {

typedef std::unique_ptr<TreeMapObject> Handle;

class JsonDocumentTest : public LibraryTest {};

TEST_F(JsonDocumentTest, MakesHandlesFromText) {
    struct {
        char const* text;
        char const* value;  // null: no handle
    } const rows[] = {{"{}", "{}"},      {"[1, 2] rest", "[1,2]"}, {"'s'", "'s'"},
                      {"", nullptr},     {"{", nullptr},           {"x", nullptr},
                      {"null", nullptr}, {nullptr, nullptr}};
    for (auto const& row : rows) {
        EXPECT_EQ(printed([&] {
                      Handle const handle(JsonData::createObject(row.text));
                      ASSERT_EQ(handle != nullptr, row.value != nullptr) << row.text;
                      if (handle != nullptr) {
                          EXPECT_EQ(text(handle->jobj), row.value);
                          EXPECT_EQ(handle->jobj_parent, nullptr);
                          EXPECT_EQ(handle->error, 0);
                          Logger::mask = 0;  // the destructor's lines are another test's
                      }
                  }),
                  "");
        Logger::mask = ~0U;
    }
}

TEST_F(JsonDocumentTest, GivesThePrettyText) {
    printed([] {
        TreeMapObject handle("{'a': [1]}");
        EXPECT_STREQ(JsonData::getJson(&handle), "{\n  \"a\": [\n    1\n  ]\n}");
        handle.error = 1;
        EXPECT_EQ(JsonData::getJson(&handle), nullptr);
        TreeMapObject none;
        EXPECT_EQ(JsonData::getJson(&none), nullptr);
        EXPECT_EQ(JsonData::getJson(nullptr), nullptr);
    });
}

TEST_F(JsonDocumentTest, ClonesThroughText) {
    JsonRef const source(json("{'a': [1.5, {'b': null}]}"));
    json_object* copy = nullptr;
    EXPECT_EQ(transcript([&] { copy = JsonData::cloneObject(source.get()); }),
              "DEBUG: cloneObject: clone json object PTR\n"
              "DEBUG: cloneObject: parser json to create new object\n");
    EXPECT_EQ(text(copy), "{'a':[1.5,{'b':null}]}");
    EXPECT_EQ(json_object_put(copy), 1);
    EXPECT_EQ(transcript([] { EXPECT_EQ(JsonData::cloneObject(nullptr), nullptr); }),
              "ERROR: cloneObject: bad pobj param jobj=NIL\n");

    JsonRef const tooDeep(json_object_new_array());
    json_object* inner = tooDeep.get();
    for (int i = 0; i < 40; ++i) {
        json_object_array_add(inner, json_object_new_array());
        inner = json_object_array_get_idx(inner, 0);
    }
    EXPECT_EQ(linesOf(transcript([&] { EXPECT_EQ(JsonData::cloneObject(tooDeep.get()), nullptr); }),
                      "ERROR"),
              "ERROR: cloneObject: fail to create new object\n");
}

TEST_F(JsonDocumentTest, ReadsFiles) {
    dir.write("good", "{\"a\": 1}");
    dir.write("empty", "");
    dir.write("cut", "{\"a\": ");
    dir.write("binary", std::string("\0\1\2\377", 4));
    dir.write("folder/x", "");
    struct {
        char const* file;
        bool handle;
        char const* value;
    } const rows[] = {{"good", true, "{'a':1}"}, {"empty", true, "null"},  {"cut", true, "null"},
                      {"binary", true, "null"},  {"folder", true, "null"}, {"none", false, ""},
                      {nullptr, false, ""}};
    printed([&] {
        for (auto const& row : rows) {
            Handle const handle(JsonData::createObjectFromFile(row.file));
            ASSERT_EQ(handle != nullptr, row.handle) << row.file;
            if (handle != nullptr) {
                EXPECT_EQ(text(handle->jobj), row.value) << row.file;
            }
        }
    });
}

TEST_F(JsonDocumentTest, SavesFiles) {
    TreeMapObject document("{'a': [1, 'x/y']}");
    EXPECT_EQ(transcript([&] { EXPECT_EQ(JsonData::saveObjectToFile("f", &document), 0); }),
              "DEBUG: saveObjectToFile: save obj=PTR\n"
              "DEBUG: saveObjectToFile: object is saved\n");
    EXPECT_EQ(dir.read("f"), "{\n  \"a\":[\n    1,\n    \"x\\/y\"\n  ]\n}");
    TreeMapObject none;
    struct {
        char const* file;
        TreeMapObject* object;
        char const* lines;
    } const rows[] = {
        {"no/f", &document,
         "DEBUG: saveObjectToFile: save obj=PTR\n"
         "DEBUG: saveObjectToFile: failed to save object to file (no/f) ret=-1\n"},
        {"f", &none,
         "DEBUG: saveObjectToFile: save obj=PTR\n"
         "DEBUG: saveObjectToFile: failed to save object to file (f) ret=-1\n"},
        {"f", nullptr,
         "DEBUG: saveObjectToFile: save obj=NIL\n"
         "DEBUG: saveObjectToFile: failed to save object to file (f) ret=-1\n"},
        {nullptr, &document,
         "DEBUG: saveObjectToFile: save obj=PTR\n"
         "DEBUG: saveObjectToFile: failed to save object to file ((null)) ret=-1\n"},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(
            transcript([&] { EXPECT_EQ(JsonData::saveObjectToFile(row.file, row.object), 2); }),
            row.lines);
    }
    EXPECT_EQ(dir.read("f"), "{\n  \"a\":[\n    1,\n    \"x\\/y\"\n  ]\n}");  // untouched
}

TEST_F(JsonDocumentTest, DumpsToStandardError) {
    TreeMapObject document("{'a': {'b': [1]}, '(null)': 2}");
    std::string const whole =
        "type=4\n{\n  \"a\":{\n    \"b\":[\n      1\n    ]\n  },\n"
        "  \"(null)\":2\n}\n";
    struct {
        char const* path;
        std::string output;
    } const rows[] = {
        {nullptr, "dumpObject: (null)\n" + whole},
        {"", "dumpObject: \n" + whole},
        {"(null)", "dumpObject: (null)\n" + whole},
        {"a.b", "dumpObject: a.b\ntype=5\n[\n  1\n]\n"},
        {"a.x", ""},
    };
    for (auto const& row : rows) {
        int count = -1;
        std::string output;
        printed([&] {
            output = printedOnError([&] { count = JsonData::dumpObject(&document, row.path); });
        });
        EXPECT_EQ(output, row.output);
        EXPECT_EQ(count, static_cast<int>(row.output.size()));
    }
    EXPECT_EQ(printedOnError([] { JsonData::dumpObject(nullptr, ""); }),
              "dumpObject: wrong params obj=(nil)\n");

    std::string const longKey(300, 'k');
    printed([&] {
        document.set(longKey.c_str(), 1);
        EXPECT_EQ(printedOnError([&] { document.dump(longKey.c_str()); }),
                  "dumpObject: " + longKey + "\ntype=3\n1\n");
    });
}

TEST_F(JsonDocumentTest, ComparesPrimitiveValues) {
    struct {
        char const* src;
        char const* dst;
        bool equal;
        char const* lines;
    } const rows[] = {
        {"'a'", "'a'", true, "DEBUG: compareObjVal: srcVal= a dstVal= a\n"},
        {"'a'", "'A'", false, "DEBUG: compareObjVal: srcVal= a dstVal= A\n"},
        {"'a\\u0000b'", "'a\\u0000c'", true, "DEBUG: compareObjVal: srcVal= a dstVal= a\n"},
        {"1", "1", true, "DEBUG: compareObjVal: srcVal= 1 dstVal= 1\n"},
        {"1", "2", false, "DEBUG: compareObjVal: srcVal= 1 dstVal= 2\n"},
        {"4294967296", "2147483647", true,
         "DEBUG: compareObjVal: srcVal= 2147483647 dstVal= 2147483647\n"},
        {"true", "false", false, "DEBUG: compareObjVal: srcVal= 1 dstVal= 0\n"},
        {"0.5", "0.5", true, "DEBUG: compareObjVal: srcVal= 0.500000 dstVal= 0.500000\n"},
        {"NaN", "NaN", false, "DEBUG: compareObjVal: srcVal= nan dstVal= nan\n"},
        {"1", "1.0", false, "DEBUG: JSON type is different\n"},
        {"1", "true", false, "DEBUG: JSON type is different\n"},
        {"null", "null", false, "DEBUG: JSON type is different\n"},
        {"{}", "{'a':1}", true, "WARN: JSON type for the comparison MUST be primary types\n"},
        {"[]", "[1]", true, "WARN: JSON type for the comparison MUST be primary types\n"},
    };
    for (auto const& row : rows) {
        JsonRef const src(json(row.src));
        JsonRef const dst(json(row.dst));
        bool equal = false;
        EXPECT_EQ(transcript([&] {
                      equal = JsonData::compareObjVal(src.get(), json_object_get_type(src.get()),
                                                      dst.get(), json_object_get_type(dst.get()));
                  }),
                  row.lines);
        EXPECT_EQ(equal, row.equal) << row.src << " " << row.dst;
    }
    EXPECT_FALSE(JsonData::compareObjVal(nullptr, json_type_string, nullptr, json_type_string));
}

}  // namespace
