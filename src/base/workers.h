// A fixed pool of worker threads for the independent pieces of one step (the samples of a
// partition level). The caller's thread works too, so a pool of one thread is no thread at all
// and gives the single-threaded order exactly.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace quarnel {

class WorkerPool {
 public:
  // `threads` counts the caller's thread; 1 or less starts no thread.
  explicit WorkerPool(int threads);
  ~WorkerPool();
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  int threads() const { return static_cast<int>(workers_.size()) + 1; }

  // Runs body(index, worker) for every index in [0, count), each exactly once, worker being a
  // number in [0, threads()) that no two concurrent calls share. Returns when all are done.
  // The body must not throw.
  void ParallelFor(int count, const std::function<void(int index, int worker)>& body);

  // The number of threads a pool should have when QUARNEL_THREADS does not say: the cores.
  static int DefaultThreads();

 private:
  void WorkerLoop(int worker);
  void RunIndices(int worker);

  std::vector<std::thread> workers_;
  std::mutex mutex_;
  std::condition_variable wake_;
  std::condition_variable done_;
  const std::function<void(int, int)>* body_ = nullptr;
  int count_ = 0;
  int next_ = 0;
  // Changed under the mutex; atomic so that a thread may watch them without it while it spins.
  std::atomic<int> busy_{0};
  std::atomic<uint64_t> generation_{0};
  std::atomic<bool> stopping_{false};
};

// Splits [0, count) into `chunks` consecutive ranges and runs body(chunk, first, last) for each,
// on the pool's threads when there is a pool. Results kept per chunk and joined in chunk order
// come out as one pass in order would give them.
void ForChunks(WorkerPool* pool, int count, int chunks,
               const std::function<void(int chunk, int first, int last)>& body);

// A number of chunks that keeps every thread of the pool busy; 1 for a count too small to share.
int ChunksFor(const WorkerPool* pool, int count);

// Items made row by row, row(i, items) appending those of row i, over ranges of rows on the
// pool's threads; joined in range order they are the items of all rows in order.
template <typename Item, typename Row>
std::vector<Item> CollectRows(WorkerPool* pool, int rows, const Row& row) {
  const int chunks = ChunksFor(pool, rows);
  std::vector<std::vector<Item>> parts(static_cast<size_t>(chunks));
  ForChunks(pool, rows, chunks, [&](int chunk, int first, int last) {
    for (int i = first; i < last; ++i) row(i, parts[static_cast<size_t>(chunk)]);
  });
  if (parts.size() == 1) return std::move(parts[0]);
  std::vector<Item> joined;
  for (const std::vector<Item>& part : parts) joined.insert(joined.end(), part.begin(), part.end());
  return joined;
}

}  // namespace quarnel
