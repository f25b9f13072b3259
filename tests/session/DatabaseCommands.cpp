// Commands of golden sessions: file names, controllers, locks and transactions.
#include <deque>
#include <thread>

#include "CommLabel.h"
#include "LocalDbCtrl.h"
#include "LocalDbSnapshot.h"
#include "Session.h"

namespace {

LOCALDB_HANDLER& controllerOf(Call const& c) { return *LocalDbCtrl::getDBByKey(c.word(1)); }

std::string stateOf(LOCALDB_HANDLER& controller, unsigned int type) {
    std::atomic_ref<int> const state(controller.state[type]);
    return std::to_string(state) + (isHeld(controller.lock[type]) ? " held" : " free");
}

// Shows the document, too, unless a save is reading it.
void showState(Call& c) {
    c.result = "state " + stateOf(controllerOf(c), c.number(2));
    if (c.result != "state 2 free" && controllerOf(c).dbObject[c.number(2)] != nullptr) {
        c.result += " " + text(controllerOf(c).dbObject[c.number(2)]->jobj);
    }
}

// Waits for a state such as "2 free".
void awaitState(Call& c) {
    while (stateOf(controllerOf(c), c.number(2)) != c.words[3] + " " + c.words[4]) {
        std::this_thread::yield();
    }
}

// Deletes the controllers of an earlier init, which are left to their users.
void init(Call&) {
    auto const former = LocalDbCtrl::controllers;
    LocalDbCtrl::init();
    printed([&] {
        for (auto const& [key, controller] : former) {
            delete controller;
        }
    });
}

void showKeys(Call& c) {
    for (auto const& [key, controller] : LocalDbCtrl::controllers) {
        c.result += key + (controller != nullptr ? " " : " (null) ");
    }
}

void find(Call& c) {
    LOCALDB_HANDLER* const found = LocalDbCtrl::getDBByKey(c.word(1));
    bool const isDefault = found != nullptr && found == LocalDbCtrl::getDBByKey("default");
    c.result = found == nullptr ? "null" : isDefault ? "the default one" : "its own";
}

// Lock, change and save: adds 1 to the member "saves".
void count(Call& c) {
    TreeMapObject* const document = LocalDbCtrl::lockDbObject(c.number(1), "", c.word(2));
    document->set("saves", document->get<int>("saves") + 1);
    c.answer(LocalDbCtrl::saveDbObject(static_cast<API_TYPE_T>(c.number(1)), c.word(2)));
}

// Ends a lock for which a removal of the session waits, and creates the session again as soon as it
// is gone.
void unlockAndClone(Call& c) {
    c.answer(LocalDbCtrl::unlockDbObject(c.number(1), c.word(2)));
    while (LocalDbCtrl::cloneNewDB(c.word(2)) == 0) {
    }
}

void dropDocument(Call& c) { delete std::exchange(controllerOf(c).dbObject[c.number(2)], nullptr); }

// Changes an entry of one of the writable tables of names.
void setName(Call& c, char const** names) {
    static std::deque<std::string> kept;
    kept.push_back(c.words[2]);
    names[c.number(1)] = c.word(2) != nullptr ? kept.back().c_str() : nullptr;
}

// Shows the buffers of the three functions after further calls, here and on another thread.
void showBuffers(Call& c) {
    char const* const data = LocalDbCtrl::getFileName(0);
    char const* const message = LocalDbCtrl::getFileName(0, 0);
    char const* const schema = LocalDbCtrl::getSchemaFile(0, 0);
    LocalDbCtrl::getFileName(1);
    std::thread([] { LocalDbCtrl::getFileName(2); }).join();
    c.result = shown(data) + " " + shown(message) + " " + shown(schema);
}

char const* const STATUSES[] = {"locked",        "busy",      "no file", "unreadable", "no node",
                                "bad arguments", "no memory", "ended",   "invalid",    "changed"};

void dropHandles(Call& c, std::string const& transaction) {
    std::erase_if(c.session.handles, [&](auto const& entry) {
        return entry.first.substr(0, entry.first.find('+')) == transaction;
    });
}

void begin(Call& c) {
    bool const reads = c.words.size() > 6 && c.words[6] == "read";
    auto transaction = std::make_unique<LocalDbTransaction>(
        c.number(2), c.word(3), c.word(4), c.number(5),
        reads ? LocalDbTransaction::READ : LocalDbTransaction::WRITE);
    c.result = STATUSES[transaction->status()];
    EXPECT_EQ(static_cast<bool>(*transaction), transaction->object() != nullptr);
    std::scoped_lock const lock(c.session.guard);
    if (*transaction) {
        c.result += " " + text(transaction->object()->jobj);
        c.session.handles[c.words[1]] = transaction->object();
        c.session.texts[c.words[1]] = text(transaction->object()->jobj);
    }
    c.session.transactions[c.words[1]] = std::move(transaction);
}

// The name of a further handle is that of the transaction, "+", and another one.
void also(Call& c) {
    std::unique_lock lock(c.session.guard);
    std::string const name = c.words[1].substr(0, c.words[1].find('+'));
    LocalDbTransaction& transaction = *c.session.transactions.at(name);
    lock.unlock();
    TreeMapObject* const handle = transaction.also(c.number(2), c.word(3));
    c.result = handle != nullptr ? text(handle->jobj) : STATUSES[transaction.status()];
    lock.lock();
    if (handle != nullptr) {
        c.session.handles[c.words[1]] = handle;
        c.session.texts[c.words[1]] = text(handle->jobj);
    } else {
        dropHandles(c, name);
    }
}

// Ends a transaction by a call, or by its destructor.
void end(Call& c, int (LocalDbTransaction::*finish)()) {
    std::unique_lock lock(c.session.guard);
    dropHandles(c, c.words[1]);
    std::unique_ptr<LocalDbTransaction>& transaction = c.session.transactions.at(c.words[1]);
    lock.unlock();
    if (finish == nullptr) {
        transaction.reset();
        return;
    }
    c.answer(((*transaction).*finish)());
    c.result += std::string(" ") + STATUSES[transaction->status()];
    LocalDbTransaction::Fault const& fault = transaction->fault();
    if (transaction->status() == LocalDbTransaction::INVALID) {
        c.result += " " + std::to_string(fault.apiType) + ": '" + fault.path + "' " + fault.message;
    }
    EXPECT_TRUE(finish != &LocalDbTransaction::save ||
                (transaction->status() == LocalDbTransaction::INVALID) == (*fault.message != '\0'));
    EXPECT_EQ(transaction->object() != nullptr, static_cast<bool>(*transaction));
    if (*transaction) {
        lock.lock();
        c.session.handles[c.words[1]] = transaction->object();
    }
}

// Takes the types in the other words at one instant.
void take(Call& c) {
    std::vector<unsigned int> types;
    for (size_t i = 1; i < c.words.size(); ++i) {
        types.push_back(c.number(i));
    }
    std::vector<LocalDbSnapshot> out(types.size());
    c.answer(LocalDbSnapshot::take(types.data(), static_cast<int>(types.size()), out.data()));
    for (LocalDbSnapshot const& snapshot : out) {
        std::unique_ptr<TreeMapObject> const copy(snapshot ? snapshot.copy("") : nullptr);
        c.result += " " + (copy ? text(copy->jobj) : std::to_string(snapshot.status()));
    }
}

// Compares the version of a transaction, which may have ended, with that of the file.
void showVersion(Call& c) {
    std::scoped_lock const lock(c.session.guard);
    uint64_t const version = c.session.transactions.at(c.words[1])->version();
    c.result = version == 0                                        ? "unknown"
               : version == LocalDbSnapshot(c.number(2)).version() ? "of the file"
                                                                   : "of another content";
}

}  // namespace

Commands const DATABASE_COMMANDS = {
    // names
    {"file", [](Call& c) { c.answer(LocalDbCtrl::getFileName(c.number(1))); }},
    {"message-file", [](Call& c) { c.answer(LocalDbCtrl::getFileName(c.number(1), c.number(2))); }},
    {"schema-file",
     [](Call& c) { c.answer(LocalDbCtrl::getSchemaFile(c.number(1), c.number(2))); }},
    {"api-folder", [](Call& c) { c.answer(LocalDbCtrl::getApiDir(c.number(1))); }},
    {"api-type", [](Call& c) { c.answer(static_cast<int>(LocalDbCtrl::getApiType(c.word(1)))); }},
    {"label-number", [](Call& c) { c.answer(COMM_TYPE(c.number(1), c.word(2))); }},
    {"label", [](Call& c) { c.answer(COMM_LABEL(c.number(1), c.number(2))); }},
    {"set-api-folder", [](Call& c) { setName(c, API_DATA_DIR); }},
    {"set-wifi-label", [](Call& c) { setName(c, WIFI_LBL); }},
    {"buffers", showBuffers},
    // controllers
    {"init", init},
    {"clone-db", [](Call& c) { c.answer(LocalDbCtrl::cloneNewDB(c.word(1))); }},
    {"remove-db", [](Call& c) { c.answer(LocalDbCtrl::removeDB(c.word(1))); }},
    {"key", find},
    {"keys", showKeys},
    // locks
    {"state", showState},
    {"await-state", awaitState},
    {"lock",
     [](Call& c) { c.keep(1, LocalDbCtrl::lockDbObject(c.number(2), c.word(3), c.word(4))); }},
    {"save-db",
     [](Call& c) {
         c.answer(LocalDbCtrl::saveDbObject(static_cast<API_TYPE_T>(c.number(1)), c.word(2)));
     }},
    {"unlock-db", [](Call& c) { c.answer(LocalDbCtrl::unlockDbObject(c.number(1), c.word(2))); }},
    {"count", count},
    {"unlock-and-clone", unlockAndClone},
    // what a program may do to the public fields
    {"drop-document", dropDocument},
    {"put-document",
     [](Call& c) { controllerOf(c).dbObject[c.number(2)] = new TreeMapObject(c.word(3)); }},
    {"put-controller", [](Call& c) { LocalDbCtrl::controllers[c.words[1]] = new LOCALDB_HANDLER; }},
    {"set-state",
     [](Call& c) {
         std::atomic_ref<int>(controllerOf(c).state[c.number(2)]) = static_cast<int>(c.number(3));
     }},
    {"unlock-mutex", [](Call& c) { pthread_mutex_unlock(&controllerOf(c).lock[c.number(2)]); }},
    // transactions
    {"begin", begin},
    {"also", also},
    {"commit", [](Call& c) { end(c, &LocalDbTransaction::save); }},
    {"keep", [](Call& c) { end(c, &LocalDbTransaction::keep); }},
    {"forget-db", [](Call& c) { end(c, &LocalDbTransaction::forget); }},
    {"version", showVersion},
    {"take", take},
    {"discard", [](Call& c) { end(c, nullptr); }},
};
