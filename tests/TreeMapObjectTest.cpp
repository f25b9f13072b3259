#include "TreeMapObject.h"

#include <string.h>

#include <memory>

#include "JsonRef.h"
#include "Support.h"

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
    printed([] { TreeMapObject("{").set("a", 1); });  // no value to store into
}

template <typename T>
struct Read {
    char const* path;
    T value;
    bool checked;  // get_ex fills its result
    char const* line;
    char const* lineOfCheck;
};

std::string show(char const* text) { return text != nullptr ? text : "null"; }
template <typename T>
T show(T value) {
    return value;
}

template <typename T, size_t N>
void expectReads(TreeMapObject& document, T untouched, Read<T> const (&rows)[N]) {
    for (auto const& row : rows) {
        SCOPED_TRACE(row.path);
        T value = T();
        std::string lines = transcript([&] { value = document.get<T>(row.path); });
        EXPECT_EQ(show(value), show(row.value));
        std::string const own = row.line;
        EXPECT_TRUE(lines.ends_with(own) || own.empty()) << lines;
        EXPECT_EQ(linesOf(lines, "WARN ERROR"), own.starts_with("WARN") ? own : "");

        T out = untouched;
        lines = transcript([&] { EXPECT_EQ(document.get_ex(row.path, out), row.checked); });
        T const missing = std::is_same_v<T, char const*> ? T() : untouched;
        EXPECT_EQ(show(out), show(row.checked ? row.value : missing));
        EXPECT_EQ(linesOf(lines, "WARN ERROR"), row.lineOfCheck);
    }
}

TEST_F(TreeMapObjectTest, ReadsTypedValues) {
    Read<int> const ints[] = {
        {"i", 7, true, "", ""},
        {"d", 3, true, "", ""},
        {"s", 12, false, "WARN: object 's' is not number!\n", "WARN: object 's' is not number!\n"},
        {"b", 1, false, "WARN: object 'b' is not number!\n", "WARN: object 'b' is not number!\n"},
        {"n", 0, false, "DEBUG: object 'n' is not available, assign default int value as 0\n",
         "ERROR: Cannot get integer value for object n due to the attribute is NULL\n"},
    };
    expectReads(document_, 5, ints);
    Read<double> const doubles[] = {
        {"d", 3.9, true, "", ""},
        {"i", 7.0, true, "", ""},
        {"s", 12.0, false, "WARN: object 's' is not number!\n",
         "WARN: object 's' is not number!\n"},
        {"x.y", 0.0, false,
         "DEBUG: object 'x.y' is not available, assign default double value as 0.0\n",
         "ERROR: Cannot get double value for object x.y due to the attribute is NULL\n"},
    };
    expectReads(document_, 5.5, doubles);
    Read<bool> const bools[] = {
        {"b", true, true, "", ""},
        {"i", true, false, "WARN: object 'i' is not boolean!\n",
         "WARN: object 'i' is not boolean!\n"},
        {"x", false, false,
         "DEBUG: object 'x' is not available, assign default bool value as false\n",
         "ERROR: Cannot get boolean value for object x due to the attribute is NULL\n"},
    };
    expectReads(document_, true, bools);
    Read<char const*> const texts[] = {
        {"s", "12", true, "", ""},
        {"o", "{ \"x\": 1 }", false, "WARN: object 'o' is not string!\n",
         "WARN: object 'o' is not string!\n"},
        {"x", nullptr, false,
         "DEBUG: object 'x' is not available, assign default string value as NULL\n",
         "ERROR: Cannot get string value for object x due to the attribute is NULL\n"},
    };
    expectReads<char const*>(document_, "untouched", texts);
    EXPECT_EQ(linesOf(transcript([&] { document_.get<int>(nullptr); }), "ERROR DEBUG"),
              "ERROR: getJObj: wrong params jobj=PTR path=NIL\n"
              "DEBUG: object '(null)' is not available, assign default int value as 0\n");
}

TEST_F(TreeMapObjectTest, WritesTypedValues) {
    TreeMapObject object(false);
    printed([&] {
        object.set("i", -5);
        object.set("u", 4294967295U);
        object.set("s", "text");
        object.set("d", 0.5);
        object.set("b", true);
    });
    EXPECT_EQ(text(object.jobj), "{'i':-5,'u':-1,'s':'text','d':0.5,'b':true}");
    struct {
        std::function<void()> action;
        char const* complaint;
    } const rows[] = {
        {[&] { object.set("i.x", 1); },
         "ERROR: TreeMapObject::set: fail to set integer value to i.x\n"},
        {[&] { object.set("i.x", 1U); },
         "ERROR: TreeMapObject::set: fail to set integer value to i.x\n"},
        {[&] { object.set("i.x", "t"); },
         "ERROR: TreeMapObject::set: fail to set string value to i.x\n"},
        {[&] { object.set("i.x", 1.5); },
         "ERROR: TreeMapObject::set: fail to set double value to i.x\n"},
        {[&] { object.set("i.x", true); },
         "ERROR: TreeMapObject::set: fail to set boolean value to i.x\n"},
        {[&] { object.set("s", static_cast<char const*>(nullptr)); },
         "ERROR: TreeMapObject::setting NULL for string, ignore\n"},
        {[&] { object.set("s", static_cast<TreeMapObject*>(nullptr)); },
         "ERROR: TreeMapObject::set: obj=null\n"},
        {[&] { object.set("i.x", &document_); },
         "ERROR: TreeMapObject::set: fail to set object value to i.x\n"},
        {[&] { object.set(nullptr, 1); },
         "ERROR: TreeMapObject::set: fail to set integer value to (null)\n"},
    };
    for (auto const& row : rows) {
        std::string const lines = linesOf(transcript(row.action), "ERROR");
        EXPECT_TRUE(lines.ends_with(row.complaint)) << lines << row.complaint;
    }
    EXPECT_EQ(text(object.jobj), "{'i':-5,'u':-1,'s':'text','d':0.5,'b':true}");
}

TEST_F(TreeMapObjectTest, DeletesMembersOnly) {
    TreeMapObject object("{'a': {'': 1, 'b': 2, 'c': 3}, 'l': [1], 'n': null}");
    struct {
        char const* path;
        char const* after;
    } const rows[] = {
        {"a.b", "{'a':{'':1,'c':3},'l':[1],'n':null}"}, {"a..", "{'a':{'c':3},'l':[1],'n':null}"},
        {"l.[0]", "{'a':{'c':3},'l':[1],'n':null}"},    {"n", "{'a':{'c':3},'l':[1],'n':null}"},
        {"x.y", "{'a':{'c':3},'l':[1],'n':null}"},      {"", "{'a':{'c':3},'l':[1],'n':null}"},
        {nullptr, "{'a':{'c':3},'l':[1],'n':null}"},    {"a", "{'l':[1],'n':null}"},
    };
    for (auto const& row : rows) {
        printed([&] { object.del(row.path); });
        EXPECT_EQ(text(object.jobj), row.after) << (row.path != nullptr ? row.path : "null");
    }
}

TEST_F(TreeMapObjectTest, StoresAnotherHandlesNodeAndNamesItself) {
    std::string const name31(31, 'k');
    std::string const name32(32, 'k');
    struct {
        std::string path;
        std::string key;
    } const rows[] = {{"o.y", "y"},
                      {"l.[4]", "[4]"},
                      {name31, name31},
                      {name32, name32},
                      {name32 + "more", name32}};
    for (auto const& row : rows) {
        TreeMapObject value("{'v': 1}");
        std::string const lines = transcript([&] { document_.set(row.path.c_str(), &value); });
        EXPECT_EQ(lines.substr(0, lines.find('\n')),
                  "DEBUG: TreeMapObject::set: " + row.path + " PTR");
        std::string const key(document_.key_obj, strnlen(document_.key_obj, 32));
        EXPECT_EQ(key, row.key);
        EXPECT_STREQ(value.key_obj, "");
        EXPECT_EQ(value.jobj_parent, nullptr);
    }
    TreeMapObject const none;
    printed([&] { document_.set("o", const_cast<TreeMapObject*>(&none)); });
    EXPECT_EQ(text(document_.jobj),
              "{'i':7,'d':3.9,'b':true,'s':'12','o':null,'n':null,'l':[{'v':1}],'" + name31 +
                  "':{'v':1},'" + name32 + "':{'v':1},'" + name32 + "more':{'v':1}}");
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

TEST_F(TreeMapObjectTest, ClonesNodes) {
    struct {
        char const* path;
        char const* value;  // null: no handle
        char const* complaint;
    } const rows[] = {
        {"o", "{'x':1}", ""},
        {nullptr, "{'i':7,'d':3.9,'b':true,'s':'12','o':{'x':1},'n':null}", ""},
        {"none", nullptr, "ERROR: clone: fail to get object by path\n"},
    };
    for (auto const& row : rows) {
        Handle copy;
        EXPECT_EQ(linesOf(transcript([&] { copy.reset(document_.clone(row.path)); }), "ERROR"),
                  row.complaint);
        ASSERT_EQ(copy != nullptr, row.value != nullptr);
        if (copy != nullptr) {
            EXPECT_EQ(text(copy->jobj), row.value);
            EXPECT_EQ(copy->jobj_parent, nullptr);
            printed([&] { copy->set("o", 2); });
        }
    }
    EXPECT_EQ(text(document_.jobj), "{'i':7,'d':3.9,'b':true,'s':'12','o':{'x':1},'n':null}");
    printedOnError([&] {
        EXPECT_EQ(transcript([&] { document_.dump(nullptr); }), "INFO: Dump object content:\n");
    });
}

}  // namespace
