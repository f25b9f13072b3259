// Reads a database as a session sees it.
#include "View.h"

#include "Limits.h"

namespace {

typedef LocalDbTransaction Transaction;
typedef LocalDbSnapshot Snapshot;

}  // namespace

View::View(Place const& place) : path_(place.path) {
    if (place.session.seesOwn(place.type)) {
        own_.emplace(place.type, path_.c_str(), place.session.databaseKey.c_str(), MAX_WAIT_MS,
                     Transaction::READ);
    } else {
        saved_.emplace(place.type);
    }
}

std::optional<Reply> View::refusal() const {
    if (own_ && !*own_) {
        return refuseDatabase(own_->status());
    }
    if (saved_ && !*saved_) {
        return refuseDatabase(saved_->status());
    }
    if (saved_ && saved_->type(path_.c_str()) == json_type_null) {
        return refuseDatabase(Transaction::NO_NODE);
    }
    return std::nullopt;
}

std::uint64_t View::version() const { return own_ ? own_->version() : saved_->version(); }

Node View::copy() const {
    if (saved_) {
        return Node(saved_->copy(path_.c_str()));
    }
    return Node(own_->object()->clone(""));
}

Reply refuseDatabase(Transaction::Status status) {
    switch (status) {
        case Transaction::BUSY: return refuse(503, "the database is busy", 1);
        case Transaction::NO_MEMORY: return refuse(503, "out of memory", 1);
        case Transaction::NO_FILE: return refuse(404, "no such database");
        case Transaction::NO_NODE: return refuse(404, "nothing at this path");
        default: return refuse(500, "the database cannot be read");
    }
}

Reply refuseDatabase(Snapshot::Status status) {
    switch (status) {
        case Snapshot::NO_MEMORY: return refuseDatabase(Transaction::NO_MEMORY);
        case Snapshot::NO_FILE: return refuseDatabase(Transaction::NO_FILE);
        default: return refuseDatabase(Transaction::UNREADABLE);
    }
}
