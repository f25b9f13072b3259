// The message names: single entries, and the rules that all of them follow.
#include "CommLabel.h"

#include <set>
#include <sstream>

#include "Support.h"

namespace {

// Requests and responses alternate. Entry 73 of the gateway holds two names run together, which are
// split here.
TEST(CommLabel, NamesComeInPairsAndOnlyOnce) {
    unsigned int const sizes[] = {89, 84, 78, 112, 164, 60, 20};
    std::set<std::string> stems;
    for (unsigned int api = 0; api < 7; ++api) {
        std::string names;
        for (unsigned int comm = 0; comm < sizes[api]; ++comm) {
            names += COMM_LABEL(api, comm) + std::string(" ");
        }
        std::istringstream stream(api != 0 ? names : names.insert(names.find("RESPG") + 4, " "));
        for (std::string request, response; stream >> request >> response;) {
            std::string const stem = request.substr(0, request.size() - 4);
            EXPECT_EQ(request + response, stem + "_REQ" + stem + "_RESP");
            EXPECT_TRUE(stems.insert(stem).second) << stem;
        }
        EXPECT_STREQ(COMM_LABEL(api, sizes[api]), "unknown") << api;
    }
    EXPECT_EQ(stems.size(), 304U);
}

}  // namespace
