// One request with its reply: read by the thread of the network, answered by a worker, to which the
// connection is left meanwhile.
#ifndef BACKEND_HTTP_EXCHANGE_H
#define BACKEND_HTTP_EXCHANGE_H

#include <microhttpd.h>

#include <cstdint>
#include <string>

#include "Admission.h"
#include "RequestHead.h"
#include "Workers.h"

class Exchange final : public Workers::Job {
  public:
    Exchange(MHD_Connection* connection, RequestHead head, Admission const& admission,
             Routes& routes);

    // Whether it is answered without reading the body; then the connection ends.
    bool isOver() const { return isOver_; }

    // A part of the body. False when there is too much of it.
    bool receive(char const* data, std::size_t size);

    // Whether the reply is there, to be sent by send(); if not, hand() has a worker make it.
    bool hasReply() const { return reply_ != nullptr; }
    void hand(Workers& workers);
    MHD_Result send();

  private:
    void replyWith(Reply reply);
    void run() noexcept override;
    void cancel() noexcept override;

    MHD_Connection* const connection_;
    Routes& routes_;
    Request request_;
    std::uint64_t received_ = 0;
    Reply ownReply_;
    Reply const* reply_ = nullptr;
    bool isOver_ = false;
};

#endif
