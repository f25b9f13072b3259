// A database as a session sees it, to be read: as it was last saved, without waiting for any writer.
// In multi-database mode it is what the session's own controller holds, until the session changes the
// database or learns that another has changed it.
#ifndef BACKEND_VIEW_H
#define BACKEND_VIEW_H

#include <LocalDbSnapshot.h>
#include <LocalDbTransaction.h>

#include <cstdint>
#include <optional>

#include "Resources.h"

class View {
  public:
    explicit View(Place const& place);

    // Why nothing can be read at the place, if so.
    std::optional<Reply> refusal() const;

    std::uint64_t version() const;  // of the database; 0 when it is not known
    Node copy() const;              // of the node at the place; null when out of memory

  private:
    std::string const path_;
    std::optional<LocalDbSnapshot> saved_;  // one of these two
    std::optional<LocalDbTransaction> own_;
};

Reply refuseDatabase(LocalDbTransaction::Status status);
Reply refuseDatabase(LocalDbSnapshot::Status status);

#endif
