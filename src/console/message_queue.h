// Worker threads and posted messages without a window: any thread posts, one thread takes. Jobs run on
// threads that are joined in the end, so that no worker is cut off in the middle of writing a file.
#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <thread>
#include <vector>

#include "base/ranked_mutex.h"
#include "core/round_worker.h"

class MessageQueue {
 public:
    MessageQueue() = default;
    ~MessageQueue();
    MessageQueue(const MessageQueue&) = delete;
    MessageQueue& operator=(const MessageQueue&) = delete;

    // The functions that a round takes; valid as long as the queue lives.
    RoundWorkers workers();

    // The oldest message. Without a timeout it waits for one; with one it may return null.
    std::unique_ptr<RoundMessage> wait();
    std::unique_ptr<RoundMessage> wait(int timeout_ms);

    // Waits for every job that was started.
    void join_workers();

 private:
    void post(std::unique_ptr<RoundMessage> message);
    void start(std::function<void()> job);
    std::unique_ptr<RoundMessage> take();

    RankedMutex<LockRank::Leaf> mutex_;
    std::condition_variable_any arrived_;
    std::deque<std::unique_ptr<RoundMessage>> messages_;
    std::vector<std::thread> threads_;
};
