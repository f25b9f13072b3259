// One request with its reply: read by the thread of the network, answered by a worker, to which the
// connection is left meanwhile.
#pragma once

#include <microhttpd.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

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

    // Whether there is a reply to send. Otherwise the connection is suspended until a worker has made it, and
    // libmicrohttpd asks again.
    bool isAnswered() const { return reply_ != nullptr; }
    void suspend() { MHD_suspend_connection(connection_); }

    // Makes the reply and resumes the connection; while the back end is stopping, only says so.
    void answer(bool isStopping) noexcept;

    // MHD_NO when there is no memory for it. Throws std::bad_alloc.
    MHD_Result send();

    Exchange* next = nullptr;  // that is to be answered

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

// Threads that make replies, which may wait: for a lock, a disk, a password's hash.
class Workers {
  public:
    Workers();
    ~Workers() { stop(); }

    // Has the reply made; after stop() only one that says so. Does not allocate. The exchange may be gone when this
    // returns.
    void submit(Exchange& exchange);

    void stop();  // returns when all have their reply

  private:
    void serve();

    std::mutex mutex_;
    std::condition_variable changed_;
    bool isStopping_ = false;
    Exchange* first_ = nullptr;
    Exchange* last_ = nullptr;
    std::vector<std::jthread> threads_;
};
