// validation SCHEMA INSTANCE COUNT: the time of a check, best of 15 rounds, in microseconds: with a
// compiled schema, with one that is compiled for each check, and of compiling alone.
#include <jsonschema.h>
#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <chrono>

namespace {

template <typename Work>
double bestOf15(int count, Work const& work) {
    double best = 1e9;
    for (int round = 0; round < 15; ++round) {
        auto const start = std::chrono::steady_clock::now();
        for (int i = 0; i < count; ++i) {
            work();
        }
        std::chrono::duration<double, std::micro> const time =
            std::chrono::steady_clock::now() - start;
        best = std::min(best, time.count() / count);
    }
    return best;
}

void require(bool condition) {
    if (!condition) {
        abort();
    }
}

}  // namespace

int main(int, char** words) {
    json_object* const document = json_object_from_file(words[1]);
    json_object* const instance = json_object_from_file(words[2]);
    int const count = atoi(words[3]);
    json_schema* const schema = json_schema_compile(document, nullptr);
    double const check =
        bestOf15(count, [&] { require(json_schema_check(schema, instance, nullptr) != 0); });
    double const both =
        bestOf15(count, [&] { require(json_validate_instance(instance, document) != 0); });
    double const compiling =
        bestOf15(count, [&] { json_schema_free(json_schema_compile(document, nullptr)); });
    printf("{\"compiled\": %.3f, \"each time\": %.3f, \"compiling\": %.3f}\n", check, both,
           compiling);
    return 0;
}
