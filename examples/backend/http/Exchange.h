// One request with its reply. The network thread reads the request; a worker makes the reply while the connection is
// suspended.
#pragma once

#include <microhttpd.h>

#include "Routes.h"

class Exchange {
  public:
    // The request has its method, path and client address; the constructor adds the rest. `names`: see admit().
    Exchange(MHD_Connection* connection, Request request, Routes& routes,
             std::vector<std::string> const& names);

    // Takes a part of the body. Returns false if the body is too long.
    bool receive(char const* data, std::size_t size);

    // Returns whether this is the connection's last exchange, whose reply is sent before the body is read.
    bool isLast() const { return isLast_; }

    // Returns whether there is a reply to send. If not, the connection is suspended until answer() has made one, and
    // libmicrohttpd calls again.
    bool isAnswered() const { return reply_ != nullptr; }

    // Makes the reply and resumes the connection. `isRefused`: the back end is stopping, or has no memory for the task;
    // the reply says so.
    void answer(bool isRefused) noexcept;

    // Queues the reply. Returns MHD_NO, or throws std::bad_alloc, if there is no memory for it.
    MHD_Result send();

  private:
    void replyWith(Reply reply);

    MHD_Connection* const connection_;
    Routes& routes_;
    Request request_;
    std::size_t received_ = 0;
    Reply ownReply_;
    Reply const* reply_ = nullptr;
    bool isLast_ = true;
};
