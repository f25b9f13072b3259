// Applies the instructions of a compiled schema to a value.
#include "jsonschema/Evaluation.h"

#include <assert.h>

#include <new>

namespace jsonschema {

bool Evaluation::satisfies(json_object* value, Node const& schema, Place const& place) {
    Budget::Level const level(budget_);
    if (!budget_.spend(1 + schema.silentCount)) {
        return false;
    }
    Application application = {*this, value, json_object_get_type(value), place, nullptr};
    return finding_ == nullptr ? decides(application, schema) : explains(application, schema);
}

// Whether all instructions hold.
bool Evaluation::decides(Application& application, Node const& schema) {
    Instruction const* const end = schema.instructions + schema.count;
    for (Instruction const* at = schema.instructions; at != end; ++at) {
        application.instruction = at;
        if (!at->isMerged && (!budget_.spend(1) || !at->keyword->holds(application))) {
            return false;
        }
    }
    return true;
}

// The same, but goes on after one that does not, and keeps its fault.
bool Evaluation::explains(Application& application, Node const& schema) {
    Instruction const* const end = schema.instructions + schema.count;
    bool holds = true;
    for (Instruction const* at = schema.instructions; at != end; ++at) {
        size_t const reports = reports_;
        application.instruction = at;
        if (budget_.spend(1) && at->keyword->holds(application) && !budget_.isUndecided()) {
            continue;
        }
        holds = false;
        if (reports_ == reports) {  // no fault of a schema inside: it is the keyword's own
            bool const undecided = budget_.isUndecided();
            budget_.spend(finding_->keep(application.place, schema, *at, undecided) / 8);
            ++reports_;
        }
        if (budget_.isUndecided()) {
            return false;
        }
    }
    return holds;
}

Evaluation::Alternatives::Alternatives(Evaluation& evaluation)
    : evaluation_(evaluation), outer_(evaluation.finding_), reports_(evaluation.reports_) {
    if (outer_ == nullptr) {
        return;
    }
    pair_ = new (std::nothrow) Pair;
    if (pair_ == nullptr) {
        evaluation_.budget_.giveUp();
    }
    evaluation_.finding_ = pair_ != nullptr ? &pair_->current : nullptr;
}

Evaluation::Alternatives::~Alternatives() {
    assert(evaluation_.finding_ == (pair_ != nullptr ? &pair_->current : nullptr));
    assert(evaluation_.reports_ >= reports_);
    evaluation_.finding_ = outer_;
    evaluation_.reports_ = reports_;
    delete pair_;
}

void Evaluation::Alternatives::endOne() {
    if (pair_ != nullptr) {
        pair_->furthest.keepLast(pair_->current);
        pair_->current = Finding();
        evaluation_.budget_.spend(2);
    }
}

void Evaluation::Alternatives::reportFurthest() {
    if (pair_ != nullptr && !pair_->furthest.isEmpty()) {
        outer_->keepFirst(pair_->furthest);
        ++reports_;
    }
}

}  // namespace jsonschema
