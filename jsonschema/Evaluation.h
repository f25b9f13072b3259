// Applies a compiled schema to an instance, or finds the first fault of an instance that it refuses.
#pragma once

#include <assert.h>

#include "jsonschema/Finding.h"
#include "jsonschema/Pattern.h"
#include "jsonschema/Schema.h"

namespace jsonschema {

class Evaluation {
  public:
    // With a finding, the evaluation goes on after a fault, as an earlier one may follow, and the
    // finding keeps the first.
    explicit Evaluation(Budget& budget, Finding* finding = nullptr)
        : budget_(budget), finding_(finding) {}

    // Whether the value satisfies a schema. False, too, when the call becomes undecided.
    bool satisfies(json_object* value, Node const& schema, Place const& place);

    bool findsFaults() const { return finding_ != nullptr; }

    // Whether to look for further faults after one.
    bool goesOn() const { return finding_ != nullptr && !budget_.isUndecided(); }

    Budget& budget() { return budget_; }
    MatchSpace& matchSpace() { return matchSpace_; }

    // While one exists, faults are not looked for: they do not make the instance invalid.
    class Silence {
      public:
        explicit Silence(Evaluation& evaluation)
            : evaluation_(evaluation), finding_(evaluation.finding_) {
            evaluation.finding_ = nullptr;
        }
        ~Silence() {
            assert(evaluation_.finding_ == nullptr);
            evaluation_.finding_ = finding_;
        }
        Silence(Silence const&) = delete;
        Silence& operator=(Silence const&) = delete;

      private:
        Evaluation& evaluation_;
        Finding* const finding_;
    };

    // While one exists, faults are those of alternatives. They count when none of them holds.
    class Alternatives {
      public:
        explicit Alternatives(Evaluation& evaluation);
        ~Alternatives();
        Alternatives(Alternatives const&) = delete;
        Alternatives& operator=(Alternatives const&) = delete;

        void endOne();          // after each of them
        void reportFurthest();  // the fault of the one that got furthest; at most once

      private:
        struct Pair {
            Finding current;
            Finding furthest;
        };

        Evaluation& evaluation_;
        Finding* const outer_;
        size_t reports_;
        Pair* pair_ = nullptr;  // not on the stack, because alternatives can be nested deeply
    };

  private:
    bool decides(Application& application, Node const& schema);
    bool explains(Application& application, Node const& schema);

    Budget& budget_;
    Finding* finding_;
    size_t reports_ = 0;
    MatchSpace matchSpace_;
};

}  // namespace jsonschema
