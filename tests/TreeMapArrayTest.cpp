#include <memory>

#include "Support.h"
#include "TreeMapObject.h"

namespace {

typedef std::unique_ptr<TreeMapObject> Handle;

class TreeMapArrayTest : public LibraryTest {
  protected:
    TreeMapObject array_{"[1, null, 3]"};
    TreeMapObject object_{"{'list': [1, 2, 3], 'nested': [[1], [2]]}"};
};

TEST_F(TreeMapArrayTest, LendsElements) {
    EXPECT_EQ(array_.len(), 3);
    Handle const last(array_.at(2));
    EXPECT_EQ(text(last->jobj), "3");
    EXPECT_EQ(last->jobj_parent, array_.jobj);
    EXPECT_STREQ(last->key_obj, "[2]");
    Handle const null(array_.at(1));
    ASSERT_NE(null, nullptr);
    EXPECT_EQ(null->jobj, nullptr);
    EXPECT_EQ(array_.at(3), nullptr);
    EXPECT_EQ(array_.at(4294967295U), nullptr);
    EXPECT_EQ(object_.at(0), nullptr);
    EXPECT_EQ(object_.len(), -1);
    EXPECT_EQ(TreeMapObject().len(), -1);
}

TEST_F(TreeMapArrayTest, ReplacesAndAppendsHandles) {
    TreeMapObject item("{'v': 1}");
    TreeMapObject none;
    struct {
        std::function<int()> action;
        int result;
        char const* key;
        char const* after;
    } const rows[] = {
        {[&] { return array_.setArrayItem(1, &item); }, 1, "[1]", "[1,{'v':1},3]"},
        {[&] { return array_.setArrayItem(10, &item); }, 3, "[3]", "[1,{'v':1},3,{'v':1}]"},
        {[&] { return array_.addArrayItem(&item); }, 4, "[4]", "[1,{'v':1},3,{'v':1},{'v':1}]"},
        {[&] { return array_.addArrayItem(&none); }, -1, "[4]", "[1,{'v':1},3,{'v':1},{'v':1}]"},
        {[&] { return array_.setArrayItem(0, nullptr); }, -1, "[4]",
         "[1,{'v':1},3,{'v':1},{'v':1}]"},
        {[&] { return object_.setArrayItem(0, &item); }, -1, "[4]",
         "[1,{'v':1},3,{'v':1},{'v':1}]"},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(transcript([&] { EXPECT_EQ(row.action(), row.result); }), "");
        EXPECT_STREQ(item.key_obj, row.key);
        EXPECT_EQ(text(array_.jobj), row.after);
        EXPECT_EQ(item.jobj_parent, nullptr);
    }
}

TEST_F(TreeMapArrayTest, AppendsValues) {
    TreeMapObject list(true);
    printed([&] {
        EXPECT_EQ(list.addArrayItem(5), 0);
        EXPECT_EQ(list.addArrayItem(true), 1);
        EXPECT_EQ(list.addArrayItem(0.5), 2);
        EXPECT_EQ(list.addArrayItem("text"), 3);
    });
    EXPECT_EQ(text(list.jobj), "[5,true,0.5,'text']");
    char const* const noText = nullptr;
    EXPECT_EQ(transcript([&] { EXPECT_EQ(list.addArrayItem(noText), -1); }),
              "ERROR: TreeMapObject::setting NULL for string, ignore\n");
    EXPECT_EQ(transcript([&] {
                  EXPECT_EQ(object_.addArrayItem(5), -1);
                  EXPECT_EQ(object_.addArrayItem(noText), -1);
              }),
              "");
}

TEST_F(TreeMapArrayTest, RebuildsOwnedAndLentArrays) {
    EXPECT_EQ(array_.delArrayItem(3), -1);
    EXPECT_EQ(array_.delArrayItem(1), 2);
    EXPECT_EQ(text(array_.jobj), "[1,3]");
    EXPECT_EQ(array_.clearArrayItems(), 0);
    EXPECT_EQ(array_.delArrayItem(0), -1);
    EXPECT_EQ(text(array_.jobj), "[]");

    Handle list;
    printed([&] { list.reset(object_.get("list")); });
    EXPECT_EQ(list->delArrayItem(0), 2);
    EXPECT_EQ(text(object_.jobj), "{'list':[2,3],'nested':[[1],[2]]}");
    EXPECT_EQ(list->clearArrayItems(), 0);
    EXPECT_EQ(text(object_.jobj), "{'list':[],'nested':[[1],[2]]}");
    EXPECT_EQ(object_.delArrayItem(0), -1);
    EXPECT_EQ(object_.clearArrayItems(), -1);
}

TEST_F(TreeMapArrayTest, RefusesToRebuildAnArrayInsideAnArray) {
    Handle nested;
    printed([&] { nested.reset(object_.get("nested.[1]")); });
    EXPECT_EQ(nested->delArrayItem(0), -1);
    EXPECT_EQ(nested->clearArrayItems(), -1);
    EXPECT_EQ(text(object_.jobj), "{'list':[1,2,3],'nested':[[1],[2]]}");
}

// A name that fills key_obj has no terminator there.
TEST_F(TreeMapArrayTest, RebuildsUnderANameOf32Characters) {
    std::string const name(32, 'k');
    TreeMapObject object(("{'" + name + "': [1, 2]}").c_str());
    Handle list;
    printed([&] { list.reset(object.get(name.c_str())); });
    EXPECT_EQ(list->delArrayItem(0), 1);
    EXPECT_EQ(text(object.jobj), "{'" + name + "':[2]}");
}

}  // namespace
