// The work and the recursion depth left to one validation call.
//
// Every part of the validator spends steps before it does work in proportion to them, and holds a
// Level while it is one level further down. Once either is used up, the call is undecided for good:
// the parts return as soon as they can, what they return no longer matters, and the caller reports
// "invalid". A plain false would not do: a "not" around it would make it "valid".
#pragma once

#include <assert.h>

#include "jsonschema/Limits.h"

namespace jsonschema {

class Budget {
  public:
    // False when the budget is used up, by this call or before.
    bool spend(size_t steps) {
        assert(!undecided_ || steps_ == 0);
        if (steps > steps_) {
            giveUp();
            return false;
        }
        steps_ -= steps;
        return true;
    }

    void giveUp() {
        steps_ = 0;
        undecided_ = true;
    }

    bool isUndecided() const { return undecided_; }

    // One level further down, for the duration of a scope.
    class Level {
      public:
        explicit Level(Budget& budget) : budget_(budget) {
            if (++budget_.depth_ > limits::DEPTH) {
                budget_.giveUp();
            }
        }
        ~Level() {
            assert(budget_.depth_ > 0);
            --budget_.depth_;
        }
        Level(Level const&) = delete;
        Level& operator=(Level const&) = delete;

      private:
        Budget& budget_;
    };

  private:
    size_t steps_ = limits::STEPS;
    int depth_ = 0;
    bool undecided_ = false;
};

}  // namespace jsonschema
