#include "jsonschema/Evaluation.h"

#include <new>

namespace jsonschema {

bool Evaluation::satisfies(json_object* value, Node const& schema, Place const& place) {
    Budget::Level const level(budget_);
    if (!budget_.spend(1)) {
        return false;
    }
    Application application = {*this, value, json_object_get_type(value), place, nullptr};
    Instruction const* const end = schema.instructions + schema.count;
    bool holds = true;
    for (Instruction const* at = schema.instructions; at != end; ++at) {
        if (at->isMerged && finding_ == nullptr) {
            continue;
        }
        application.instruction = at;
        size_t const reports = reports_;
        if (budget_.spend(1) && at->keyword->holds(application) && !budget_.isUndecided()) {
            continue;
        }
        if (finding_ == nullptr) {
            return false;
        }
        holds = false;
        if (reports_ == reports) {  // no fault of a schema inside: it is the keyword's own
            budget_.spend(finding_->keep(place, schema, *at, budget_.isUndecided()) / 8);
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
