// The worker pool: one batch of indices at a time, handed out one by one to whichever thread
// asks next.
#include "base/workers.h"

namespace quarnel {

namespace {

// A partition level calls on the pool many times in a row with little work in between, and
// waking a sleeping thread takes longer than many of those pieces of work: a thread that has
// just finished watches for the next call a little while before it sleeps (about 0.1 ms).
constexpr int kSpins = 4000;

void Pause() {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#else
  std::this_thread::yield();
#endif
}

}  // namespace

WorkerPool::WorkerPool(int threads) {
  for (int w = 1; w < threads; ++w) workers_.emplace_back([this, w] { WorkerLoop(w); });
}

WorkerPool::~WorkerPool() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_all();
  for (std::thread& worker : workers_) worker.join();
}

int WorkerPool::DefaultThreads() {
  const unsigned cores = std::thread::hardware_concurrency();
  return cores > 0 ? static_cast<int>(cores) : 1;
}

void WorkerPool::RunIndices(int worker) {
  std::unique_lock<std::mutex> lock(mutex_);
  while (next_ < count_) {
    const int index = next_++;
    const std::function<void(int, int)>& body = *body_;
    lock.unlock();
    body(index, worker);
    lock.lock();
  }
}

void WorkerPool::WorkerLoop(int worker) {
  uint64_t seen = 0;
  std::unique_lock<std::mutex> lock(mutex_);
  for (;;) {
    lock.unlock();
    for (int spin = 0; spin < kSpins && generation_.load() == seen && !stopping_.load(); ++spin) Pause();
    lock.lock();
    wake_.wait(lock, [&] { return stopping_ || generation_ != seen; });
    if (stopping_) return;
    seen = generation_;
    ++busy_;
    lock.unlock();
    RunIndices(worker);
    lock.lock();
    if (--busy_ == 0) done_.notify_all();
  }
}

void WorkerPool::ParallelFor(int count, const std::function<void(int, int)>& body) {
  if (workers_.empty() || count <= 1) {
    for (int i = 0; i < count; ++i) body(i, 0);
    return;
  }
  {
    std::lock_guard<std::mutex> lock(mutex_);
    body_ = &body;
    count_ = count;
    next_ = 0;
    ++generation_;
  }
  wake_.notify_all();
  RunIndices(0);
  for (int spin = 0; spin < kSpins && busy_.load() != 0; ++spin) Pause();
  std::unique_lock<std::mutex> lock(mutex_);
  done_.wait(lock, [&] { return busy_ == 0 && next_ >= count_; });
  body_ = nullptr;
}

void ForChunks(WorkerPool* pool, int count, int chunks,
               const std::function<void(int, int, int)>& body) {
  if (count <= 0) return;
  if (chunks < 1) chunks = 1;
  auto range = [&](int chunk, int) {
    const int first = static_cast<int>(static_cast<int64_t>(count) * chunk / chunks);
    const int last = static_cast<int>(static_cast<int64_t>(count) * (chunk + 1) / chunks);
    body(chunk, first, last);
  };
  if (pool != nullptr)
    pool->ParallelFor(chunks, range);
  else
    for (int chunk = 0; chunk < chunks; ++chunk) range(chunk, 0);
}

// Fewer rows than kSerialRows are one chunk, run on the calling thread: a scan of so few rows
// takes less time than handing it to another thread and waiting for it.
int ChunksFor(const WorkerPool* pool, int count) {
  constexpr int kChunksPerThread = 8;
  constexpr int kSmallestChunk = 16;
  constexpr int kSerialRows = 200;
  if (pool == nullptr || pool->threads() <= 1 || count < kSerialRows) return 1;
  const int wanted = pool->threads() * kChunksPerThread;
  const int most = (count + kSmallestChunk - 1) / kSmallestChunk;
  return wanted < most ? wanted : (most > 0 ? most : 1);
}

}  // namespace quarnel
