#include "console/message_queue.h"

#include <chrono>
#include <utility>

MessageQueue::~MessageQueue() {
    join_workers();
}

RoundWorkers MessageQueue::workers() {
    RoundWorkers workers;
    workers.start_worker = [this](std::function<void()> job) { start(std::move(job)); };
    workers.post = [this](std::unique_ptr<RoundMessage> message) {
        post(std::move(message));
        return true;
    };
    return workers;
}

std::unique_ptr<RoundMessage> MessageQueue::wait() {
    std::unique_lock lock(mutex_);
    arrived_.wait(lock, [this] { return !messages_.empty(); });
    return take();
}

std::unique_ptr<RoundMessage> MessageQueue::wait(int timeout_ms) {
    std::unique_lock lock(mutex_);
    const std::chrono::milliseconds timeout(timeout_ms);
    if (!arrived_.wait_for(lock, timeout, [this] { return !messages_.empty(); })) return nullptr;
    return take();
}

void MessageQueue::join_workers() {
    std::vector<std::thread> threads;
    {
        const std::lock_guard lock(mutex_);
        threads.swap(threads_);
    }
    for (std::thread& thread : threads) thread.join();
}

void MessageQueue::post(std::unique_ptr<RoundMessage> message) {
    {
        const std::lock_guard lock(mutex_);
        messages_.push_back(std::move(message));
    }
    arrived_.notify_one();
}

void MessageQueue::start(std::function<void()> job) {
    const std::lock_guard lock(mutex_);
    threads_.emplace_back(std::move(job));
}

std::unique_ptr<RoundMessage> MessageQueue::take() {
    std::unique_ptr<RoundMessage> message = std::move(messages_.front());
    messages_.pop_front();
    return message;
}
