// One request with its reply: read by the thread of the network, answered by a worker, to which the
// connection is left meanwhile.
#pragma once

#include <microhttpd.h>

#include "Routes.h"

class Exchange {
  public:
    // The request has a method, a path and a client's address so far. `names`: see admit().
    Exchange(MHD_Connection* connection, Request request, Routes& routes,
             std::vector<std::string> const& names);

    // A part of the body. False when there is too much of it.
    bool receive(char const* data, std::size_t size);

    // Whether the reply goes out before the body is read; then it is the last of the connection.
    bool isLast() const { return isLast_; }

    // Whether there is a reply to send. Otherwise the connection is suspended until answer() has made it, and
    // libmicrohttpd asks again.
    bool isAnswered() const { return reply_ != nullptr; }

    // Makes the reply and resumes the connection. When the back end is stopping, or has no memory for a
    // worker's task, it is a refusal.
    void answer(bool isRefused) noexcept;

    // MHD_NO when there is no memory for it. Throws std::bad_alloc.
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
