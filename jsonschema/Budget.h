// The steps and the depth that are left to a call. Once they are used up the call is undecided, for
// good: whatever it answers then, it answers "invalid".
#ifndef JSONSCHEMA_BUDGET_H
#define JSONSCHEMA_BUDGET_H

#include "jsonschema/Limits.h"

namespace jsonschema {

class Budget {
  public:
    // False when the steps are used up, now or before.
    bool spend(size_t steps) {
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

    // One level further down, for the length of a scope.
    class Level {
      public:
        explicit Level(Budget& budget) : budget_(budget) {
            if (++budget_.depth_ > limits::DEPTH) {
                budget_.giveUp();
            }
        }
        ~Level() { --budget_.depth_; }
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

#endif
