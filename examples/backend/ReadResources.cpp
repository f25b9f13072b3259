// Reads a value, the objects below it that have a certain member, or all databases.
#include <JsonData.h>
#include <LocalDbCtrl.h>
#include <LocalDbSnapshot.h>

#include "Limits.h"
#include "Resources.h"

namespace {

typedef std::function<Reply(TreeMapObject& node)> Selection;

// Answers with what the selection makes of a copy of the node, without secrets. Nothing is copied if the client has that
// version already.
template <typename CopyNode>
Reply select(Place const& place, std::uint64_t version, CopyNode const& copyNode,
             Selection const& selection) {
    std::string const tag = tagOf(version, place.session.isAdministrator());
    require(place.conditions.isWanted(tag), 412, "there is another version of this");
    if (place.conditions.isKnown(tag)) {
        return {.status = 304, .etag = tag};
    }
    Node const copy(copyNode());
    require(copy != nullptr, 503, "out of memory", 1);
    removeSecrets(place, *copy);
    Reply reply = selection(*copy);
    reply.etag = tag;
    return reply;
}

// Selects from the database as it was last saved, without waiting for writers. In multi-database mode, selects from the
// session's own controller until the session changes the database or learns that another session has changed it.
Reply reading(Place const& place, Selection const& selection) {
    char const* const path = place.path.c_str();
    if (place.session.seesOwn(place.type)) {
        LocalDbTransaction const own(place.type, path, place.session.databaseKey.c_str(),
                                     MAX_WAIT_MS, LocalDbTransaction::READ);
        requireReadable(own);
        return select(
            place, own.version(), [&] { return own->clone(""); }, selection);
    }
    LocalDbSnapshot const saved(place.type);
    requireReadable(saved);
    require(saved.type(path) != json_type_null, 404, "nothing at this path");
    return select(
        place, saved.version(), [&] { return saved.copy(path); }, selection);
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
    require(!isSecret(place, key), 403, "passwords and keys are not shown");
    return reading(place, [&](TreeMapObject& node) {
        Node const paths(node.findPaths(key.c_str(), value.c_str()));
        require(paths != nullptr, 503, "out of memory", 1);
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

Reply readEverything(Request const& request) {
    Session const& session = *request.session;
    TreeMapObject all(false);
    for (unsigned int type = 0; type < API_TYPE_COUNT; ++type) {
        Node entry = std::make_unique<TreeMapObject>(false);
        try {
            Reply const read = reading({type, "", session, {}}, [&](TreeMapObject& document) {
                Node const schema(JsonData::createObjectFromFile(schemaFileOf(type).c_str()));
                entry->set("value", &document);
                entry->set("schema", schema.get());  // none if there is no schema
                return Reply();
            });
            entry->set("etag", read.etag.c_str());
        } catch (Reply const& refusal) {
            entry.reset(JsonData::createObject(refusal.body.c_str()));
        }
        all.set(LocalDbCtrl::getApiDir(type), entry.get());
    }
    return replyWith(all);
}
