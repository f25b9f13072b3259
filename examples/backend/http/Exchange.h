// One request with its reply: read by the thread of the network, answered by a worker, to which the
// connection is left meanwhile.
#ifndef BACKEND_HTTP_EXCHANGE_H
#define BACKEND_HTTP_EXCHANGE_H

#include <microhttpd.h>

#include "Routes.h"
#include "Workers.h"

class Exchange final : public Workers::Job {
  public:
    // The request has a method, a path and a client's address so far. `names`: see admit().
    Exchange(MHD_Connection* connection, Request request, Routes& routes,
             std::vector<std::string> const& names);

    // A part of the body. False when there is too much of it.
    bool receive(char const* data, std::size_t size);

    // Whether the reply goes out before the body is read; then it is the last of the connection.
    bool isLast() const { return isLast_; }

    // Sends the reply. When there is none yet, a worker has to make it, after which libmicrohttpd asks for it again.
    // MHD_NO when there is no memory for it. Throws std::bad_alloc.
    MHD_Result reply(Workers& workers);

  private:
    void replyWith(Reply reply);
    MHD_Result send();
    void run(bool isStopping) noexcept override;

    MHD_Connection* const connection_;
    Routes& routes_;
    Request request_;
    std::size_t received_ = 0;
    Reply ownReply_;
    Reply const* reply_ = nullptr;
    bool isLast_ = true;
};

#endif
