// Schemas of files: which are kept, for whom, and how many.
#include "jsondata/SchemaFile.h"

#include <unistd.h>

#include <memory>

#include "LocalDbSnapshot.h"
#include "Support.h"

using vobiutils::SchemaFile;

namespace {

class SchemaFileTest : public LibraryTest {
  protected:
    ~SchemaFileTest() override { LocalDbSnapshot::forget(); }

    static std::unique_ptr<SchemaFile> open(std::string const& name) {
        struct stat status;
        EXPECT_EQ(stat(name.c_str(), &status), 0);
        return std::make_unique<SchemaFile>(name.c_str(), status);
    }
};

TEST_F(SchemaFileTest, ServesOneValidationAtATime) {
    dir.write("schema", "{'a':1}");
    usleep(40000);  // its times are then no longer recent
    json_object* const kept = open("schema")->get();
    for (int i = 0; i < 2; ++i) {
        auto const first = open("schema");
        auto const second = open("schema");
        EXPECT_EQ(first->get(), kept);
        EXPECT_NE(second->get(), kept);
        EXPECT_EQ(text(second->get()), "{'a':1}");
    }
    auto const held = open("schema");
    LocalDbSnapshot::forget();
    EXPECT_NE(open("schema")->get(), kept);
    EXPECT_EQ(text(held->get()), "{'a':1}");
}

TEST_F(SchemaFileTest, KeepsTheFewThatWereUsedLast) {
    long const before = entriesOf("/proc/self/fd");
    dir.write("large", "['" + std::string(32 << 10, 'x') + "']");
    EXPECT_EQ(json_object_array_length(open("large")->get()), 1U);
    EXPECT_EQ(entriesOf("/proc/self/fd"), before);
    for (int i = 0; i < 100; ++i) {
        std::string const name = "schema" + std::to_string(i);
        dir.write(name, "{'a':" + std::to_string(i) + "}");
        EXPECT_EQ(text(open(name)->get()), "{'a':" + std::to_string(i) + "}");
        EXPECT_EQ(text(open("schema0")->get()), "{'a':0}");
        EXPECT_EQ(entriesOf("/proc/self/fd"), before + std::min(i + 1, 16));
    }
    usleep(40000);
    json_object* const kept[] = {open("schema0")->get(), open("schema99")->get()};
    EXPECT_EQ(open("schema0")->get(), kept[0]);
    EXPECT_EQ(open("schema99")->get(), kept[1]);
}

}  // namespace
