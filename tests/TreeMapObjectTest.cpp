// The handle: ownership, names, and what the golden sessions cannot show.
#include "TreeMapObject.h"

#include <string.h>

#include <memory>

#include "Support.h"
#include "jsondata/JsonRef.h"

using namespace vobiutils;

namespace {

typedef std::unique_ptr<TreeMapObject> Handle;

class TreeMapObjectTest : public LibraryTest {
  protected:
    TreeMapObject document_{"{'i': 7, 'd': 3.9, 'b': true, 's': '12', 'o': {'x': 1}, 'n': null}"};
};

TEST_F(TreeMapObjectTest, IsMadeFromTextNodeOrNothing) {
    struct {
        TreeMapObject handle;
        char const* value;
    } const rows[] = {
        {TreeMapObject(), "null"},
        {TreeMapObject(true), "[]"},
        {TreeMapObject(false), "{}"},
        {TreeMapObject("{'a':1}"), "{'a':1}"},
        {TreeMapObject("{"), "null"},
        {TreeMapObject(static_cast<char const*>(nullptr)), "null"},
        {TreeMapObject(json("[2]")), "[2]"},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(text(row.handle.jobj), row.value);
        EXPECT_EQ(row.handle.jobj_parent, nullptr);
        EXPECT_EQ(row.handle.error, 0);
        EXPECT_STREQ(row.handle.key_obj, "");
    }
}

TEST_F(TreeMapObjectTest, LendsNodesAndSharesTheRoot) {
    std::string const longName(40, 'n');
    printed([&] { document_.set((longName + ".x").c_str(), 1); });
    Handle node;
    printed([&] { node.reset(document_.get(longName.c_str())); });
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->jobj_parent, document_.jobj);
    EXPECT_EQ(std::string(node->key_obj, 32), longName.substr(0, 32));
    EXPECT_EQ(transcript([&] { node.reset(); }),
              "DEBUG: ~TreeMapObject: this=PTR\n"
              "DEBUG:      ignore jobj=PTR jobj_parent=PTR key_obj=" +
                  longName.substr(0, 31) + "\n");
    printed([&] {
        EXPECT_EQ(document_.get("n"), nullptr);
        EXPECT_EQ(document_.get("x.y"), nullptr);
        EXPECT_EQ(document_.get(static_cast<char const*>(nullptr)), nullptr);
    });

    Handle first(new TreeMapObject("{'a': 1}"));
    Handle const second(first->get(""));
    EXPECT_EQ(second->jobj, first->jobj);
    EXPECT_EQ(second->jobj_parent, nullptr);
    EXPECT_EQ(transcript([&] { first.reset(); }),
              "DEBUG: ~TreeMapObject: this=PTR\nDEBUG:      release jobj=PTR\n");
    EXPECT_EQ(text(second->jobj), "{'a':1}");
}

}  // namespace
