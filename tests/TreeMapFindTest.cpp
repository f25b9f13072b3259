#include <list>

#include "JsonRef.h"
#include "Support.h"
#include "TreeMapObject.h"

namespace {

class TreeMapFindTest : public LibraryTest {
  protected:
    // The nodes of the hits, which are released.
    std::string taken(std::list<TreeMapObject*> hits) {
        std::string nodes;
        for (TreeMapObject* hit : hits) {
            EXPECT_EQ(hit->jobj_parent, nullptr);
            nodes += text(hit->jobj) + " ";
            printed([&] { delete hit; });
        }
        return nodes;
    }

    TreeMapObject document_{
        "{'a':{'name':'eth0'},'b':[{'name':'eth0'},{'name':'eth1'}],"
        "'c':{'in':[[{'name':'eth0','up':true}]],'name':'eth0','port':80}}"};
};

TEST_F(TreeMapFindTest, FindsTextsAtEveryDepthInDocumentOrder) {
    std::list<TreeMapObject*> hits;
    EXPECT_EQ(linesOf(transcript([&] { hits = document_.find("name", "eth0"); }), "WARN ERROR"),
              "");
    EXPECT_EQ(taken(hits),
              "{'name':'eth0'} {'name':'eth0'} {'name':'eth0','up':true} "
              "{'in':[[{'name':'eth0','up':true}]],'name':'eth0','port':80} ");
}

TEST_F(TreeMapFindTest, ReportsATextThatIsNotFound) {
    TreeMapObject none;
    TreeMapObject primitive("'top'");
    char const* const noText = nullptr;
    char const* const failed = "ERROR: Some error happened, cannot return result\n";
    std::string const notSearchable = "ERROR: parent object is not object neither array\n";
    struct {
        TreeMapObject& document;
        char const* key;
        char const* value;
        std::string lines;
    } const rows[] = {
        {document_, "name", "eth", failed},
        {document_, "Name", "eth0", failed},
        {document_, "up", "true", failed},
        {document_, "name", noText, failed},
        {none, "name", "eth0", failed},
        {primitive, "name", "top", notSearchable + failed},
        {document_, "", "eth0", "ERROR: Key is null or empty\n"},
        {document_, nullptr, "eth0", "ERROR: Key is null or empty\n"},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(
            linesOf(transcript([&] { EXPECT_TRUE(row.document.find(row.key, row.value).empty()); }),
                    "ERROR"),
            row.lines);
    }
}

TEST_F(TreeMapFindTest, NeverHandsOutHitsOfOtherTypes) {
    IntendedLeaks const hits;
    TreeMapObject numbers("[{'i': 5}, {'d': 0.5}, {'b': true}, {'u': -1}]");
    TreeMapObject primitive("1");
    TreeMapObject none;
    std::string const failed = "ERROR: Some error happened, cannot return result\n";
    struct {
        std::function<std::list<TreeMapObject*>()> search;
        std::string lines;
    } const rows[] = {
        {[&] { return numbers.find("i", 5); }, failed},
        {[&] { return numbers.find("i", 6); }, ""},
        {[&] { return numbers.find("u", 4294967295U); }, failed},
        {[&] { return numbers.find("d", 0.5); }, failed},
        {[&] { return numbers.find("b", true); }, failed},
        {[&] { return numbers.find("i", true); }, ""},
        {[&] { return primitive.find("i", 1); },
         "ERROR: parent object is not object neither array\n" + failed},
        {[&] { return none.find("i", 1); }, ""},
        {[&] { return numbers.find("", 1); }, "ERROR: Key is null or empty\n"},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(linesOf(transcript([&] { EXPECT_TRUE(row.search().empty()); }), "ERROR"),
                  row.lines);
    }
}

TEST_F(TreeMapFindTest, SearchesObjectsAndArraysOnTheirOwn) {
    JsonRef const value(json("'x'"));
    JsonRef const object(json("{'k':{'k':'x'},'l':[null,1,{'k':'x'}]}"));
    JsonRef const twice(json("[{'k':'x','m':{'k':'x'}}]"));
    struct {
        bool inArray;
        char const* key;
        json_object* value;
        json_object* container;
        int count;
        char const* lines;
    } const rows[] = {
        {false, "k", value.get(), object.get(), 2,
         "WARN: Found null object in the array\n"
         "WARN: findInArray: array items have primary type"
         "DEBUG: compareObjVal: srcVal= x dstVal= x\n"},
        {true, "k", value.get(), twice.get(), 2, ""},
        {true, "k", value.get(), object.get(), 0, ""},
        {false, "k", value.get(), twice.get(), 0, ""},
        {true, nullptr, value.get(), twice.get(), 0,
         "ERROR: findInArray: NULL arguments is not accepted\n"},
        {false, "k", nullptr, object.get(), 0,
         "ERROR: findInObject: NULL arguments is not accepted\n"},
        {false, "k", value.get(), nullptr, 0,
         "ERROR: findInObject: NULL arguments is not accepted\n"},
    };
    for (auto const& row : rows) {
        std::list<TreeMapObject*> hits;
        int count = -1;
        std::string const lines = transcript([&] {
            count = row.inArray ? document_.findInArray(hits, row.key, row.value, row.container)
                                : document_.findInObject(hits, row.key, row.value, row.container);
        });
        EXPECT_EQ(count, row.count);
        EXPECT_EQ(hits.size(), static_cast<size_t>(row.count));
        EXPECT_EQ(linesOf(lines, "WARN ERROR"), row.lines);
        taken(hits);
    }
}

}  // namespace
