// Commands of golden sessions: handles, typed values, arrays and search.
#include "JsonData.h"
#include "Session.h"
#include "jsondata/JsonRef.h"

using namespace vobiutils;

namespace {

char const* const PRESENCES[] = {"present", "vacant", "impossible"};

void drop(Call& c, bool isDeleted) {
    TreeMapObject const* const handle = c.handle(1);
    std::scoped_lock const lock(c.session.guard);
    c.session.handles.erase(c.words[1]);
    if (isDeleted) {
        delete handle;
    }
}

void getChecked(Call& c) {
    c.typed(4, [&](auto out) {
        bool const got = c.handle(1)->get_ex(c.word(2), out);
        c.result = shown(got) + " " + shown(out);
    });
}

void showHits(Call& c, std::list<TreeMapObject*> const& hits) {
    c.result += std::to_string(hits.size()) + " hits";
    for (TreeMapObject* hit : hits) {
        c.result += " " + text(hit->jobj);
        printed([&] { delete hit; });
    }
}

void find(Call& c) {
    IntendedLeaks const ofNumbers;
    c.typed(4, [&](auto value) { showHits(c, c.handle(1)->find(c.word(2), value)); });
}

void findUnsigned(Call& c) {
    IntendedLeaks const hits;
    showHits(c, c.handle(1)->find(c.word(2), c.number(3)));
}

void search(Call& c, bool inArray) {
    std::list<TreeMapObject*> hits;
    JsonRef const value(c.json(3));
    int const count = inArray ? c.handle(1)->findInArray(hits, c.word(2), value.get(), c.node(4))
                              : c.handle(1)->findInObject(hits, c.word(2), value.get(), c.node(4));
    c.result = shown(count) + " ";
    showHits(c, hits);
}

}  // namespace

Commands const HANDLE_COMMANDS = {
    {"show", [](Call& c) { c.answer(c.handle(1)); }},
    {"free", [](Call& c) { drop(c, true); }},
    {"forget", [](Call& c) { drop(c, false); }},
    {"fail", [](Call& c) { c.handle(1)->error = 1; }},
    {"get-int", [](Call& c) { c.answer(c.handle(1)->get<int>(c.word(2))); }},
    {"get-bool", [](Call& c) { c.answer(c.handle(1)->get<bool>(c.word(2))); }},
    {"get-double", [](Call& c) { c.answer(c.handle(1)->get<double>(c.word(2))); }},
    {"get-text", [](Call& c) { c.answer(c.handle(1)->get<char const*>(c.word(2))); }},
    {"get", getChecked},
    {"set", [](Call& c) { c.typed(4, [&](auto value) { c.handle(1)->set(c.word(2), value); }); }},
    {"set-unsigned", [](Call& c) { c.handle(1)->set(c.word(2), c.number(3)); }},
    {"put", [](Call& c) { c.handle(1)->set(c.word(2), c.handle(3)); }},
    {"del", [](Call& c) { c.handle(1)->del(c.word(2)); }},
    {"node", [](Call& c) { c.keep(1, c.handle(2)->get(c.word(3))); }},
    {"clone", [](Call& c) { c.keep(1, c.handle(2)->clone(c.word(3))); }},
    {"at", [](Call& c) { c.keep(1, c.handle(2)->at(c.number(3))); }},
    {"get-int64",
     [](Call& c) {
         int64_t out = -1;
         bool const got = c.handle(1)->get_ex(c.word(2), out);
         c.result = shown(got) + " " + std::to_string(out);
     }},
    {"set-int64", [](Call& c) { c.handle(1)->set<int64_t>(c.word(2), atoll(c.word(3))); }},
    {"presence", [](Call& c) { c.answer(PRESENCES[c.handle(1)->presence(c.word(2))]); }},
    {"remove", [](Call& c) { c.answer(c.handle(1)->remove(c.word(2))); }},
    {"remove-all", [](Call& c) { c.answer(c.handle(1)->removeAll(c.word(2))); }},
    {"merge", [](Call& c) { c.answer(c.handle(1)->merge(c.word(2), c.handle(3))); }},
    {"find-paths", [](Call& c) { c.keep(1, c.handle(2)->findPaths(c.word(3), c.word(4))); }},
    {"len", [](Call& c) { c.answer(c.handle(1)->len()); }},
    {"set-item", [](Call& c) { c.answer(c.handle(1)->setArrayItem(c.number(2), c.handle(3))); }},
    {"add-item", [](Call& c) { c.answer(c.handle(1)->addArrayItem(c.handle(2))); }},
    {"add",
     [](Call& c) { c.typed(3, [&](auto value) { c.answer(c.handle(1)->addArrayItem(value)); }); }},
    {"del-item", [](Call& c) { c.answer(c.handle(1)->delArrayItem(c.number(2))); }},
    {"clear", [](Call& c) { c.answer(c.handle(1)->clearArrayItems()); }},
    {"find", find},
    {"find-unsigned", findUnsigned},
    {"find-in-object", [](Call& c) { search(c, false); }},
    {"find-in-array", [](Call& c) { search(c, true); }},
};
