// Reads what is at a place: as a whole, or the objects in it that have a certain member. And everything.
#include <JsonData.h>
#include <LocalDbCtrl.h>
#include <LocalDbSnapshot.h>
#include <LocalDbTransaction.h>

#include <functional>
#include <optional>

#include "Access.h"
#include "Limits.h"
#include "Messages.h"
#include "Resources.h"

namespace {

LocalDbTransaction::Status statusOf(LocalDbSnapshot const& snapshot, std::string const& path) {
    switch (snapshot.status()) {
        case LocalDbSnapshot::NO_MEMORY: return LocalDbTransaction::NO_MEMORY;
        case LocalDbSnapshot::NO_FILE: return LocalDbTransaction::NO_FILE;
        case LocalDbSnapshot::READ: break;
        default: return LocalDbTransaction::UNREADABLE;
    }
    return snapshot.type(path.c_str()) == json_type_null ? LocalDbTransaction::NO_NODE
                                                         : LocalDbTransaction::LOCKED;
}

// A database as a session sees it: as it was last saved, without waiting for any writer. In multi-database mode
// it is what the session's own controller holds, until the session changes the database or learns that another
// has changed it.
class View {
  public:
    // Throws the refusal when nothing can be read at the place.
    explicit View(Place const& place) : place_(place) {
        if (place.session.seesOwn(place.type)) {
            own_.emplace(place.type, place.path.c_str(), place.session.databaseKey.c_str(),
                         MAX_WAIT_MS, LocalDbTransaction::READ);
        } else {
            saved_.emplace(place.type);
        }
        LocalDbTransaction::Status const status =
            own_ ? own_->status() : statusOf(*saved_, place.path);
        if (status != LocalDbTransaction::LOCKED) {
            throw refuseDatabase(status);
        }
    }

    std::string tag() const {
        return tagOf(own_ ? own_->version() : saved_->version(), place_.session.isAdministrator());
    }

    // What the session may see of the node at the place.
    Node copy() const {
        Node copy(own_ ? own_->object()->clone("") : saved_->copy(place_.path.c_str()));
        if (copy == nullptr) {
            throw refuseDatabase(LocalDbTransaction::NO_MEMORY);
        }
        removeSecrets(place_, *copy);
        return copy;
    }

  private:
    Place const& place_;
    std::optional<LocalDbSnapshot> saved_;  // one of these two
    std::optional<LocalDbTransaction> own_;
};

// Answers with what `select` makes of a copy of the node at the place, unless the client has that already.
Reply reading(Place const& place, std::function<Reply(TreeMapObject&)> const& select) {
    View const view(place);
    std::string const tag = view.tag();
    require(place.conditions.isWanted(tag), 412, "there is another version of this");
    Reply reply = place.conditions.isKnown(tag) ? Reply{.status = 304} : select(*view.copy());
    reply.etag = tag;
    return reply;
}

// {"etag": ..., "value": ..., "schema": ...}, without the last if there is none.
Node entryOf(Place const& place) {
    View const view(place);
    Node const value = view.copy();
    Node const schema(JsonData::createObjectFromFile(schemaFileOf(place.type).c_str()));
    auto entry = std::make_unique<TreeMapObject>(false);
    entry->set("etag", view.tag().c_str());
    entry->set("value", value.get());
    entry->set("schema", schema.get());
    return entry;
}

}  // namespace

Reply readResource(Place const& place) {
    requireVisible(place);
    return reading(place, [&](TreeMapObject& node) {
        if (char const* const message = messageOf("GET", place.type, place.path)) {
            requireResponse(place.type, message, node);
        }
        return replyWith(node);
    });
}

Reply findResources(Place const& place, std::string const& key, std::string const& value) {
    requireVisible(place);
    require(!isSecret(place, key), 403, "not shown to anyone");
    return reading(place, [&](TreeMapObject& node) {
        Node const paths(node.findPaths(key.c_str(), value.c_str()));
        if (paths == nullptr) {
            throw refuseDatabase(LocalDbTransaction::NO_MEMORY);
        }
        TreeMapObject found(true);
        for (int i = 0; i < paths->len(); ++i) {
            std::string const path =
                paths->get<char const*>(("[" + std::to_string(i) + "]").c_str());
            Node const object(node.get(JsonData::parentPath(path).c_str()));
            found.addArrayItem(object.get());
        }
        return replyWith(found);
    });
}

Reply readEverything(Session const& session) {
    TreeMapObject all(false);
    for (unsigned int type = 0; type < API_TYPE_COUNT; ++type) {
        Node entry;
        try {
            entry = entryOf({type, "", session, {}});
        } catch (Reply const& refusal) {
            entry.reset(JsonData::createObject(refusal.body.c_str()));
        }
        all.set(LocalDbCtrl::getApiDir(type), entry.get());
    }
    return replyWith(all);
}
