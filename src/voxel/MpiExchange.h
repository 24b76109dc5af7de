// Who this process is among those sharing the slabs along x, and how they exchange data.
// This build is one process: every exchange is trivial, but callers keep their distributed paths.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace gridmoor {

// The interface is byte-based and untyped on purpose, so that a message-passing build can
// supply the same operations from another translation unit without touching the callers.
class MpiExchange {
 public:
  using Request = std::uint64_t;
  static constexpr Request noRequest = ~Request{0};

  MpiExchange() = default;
  MpiExchange(const MpiExchange&) = delete;
  MpiExchange& operator=(const MpiExchange&) = delete;
  virtual ~MpiExchange() = default;

  int getRank() const;
  int getNumberOfProcesses() const;
  // [begin, end): the x planes out of `size` held by process `rank` (a negative rank is
  // this process).
  void getDataRange(std::uint64_t size, std::uint64_t& begin, std::uint64_t& end,
                    int rank = -1) const;
  void barrier() const;

  void send(const void* data, std::uint64_t bytes, int destination, int tag = 0);
  void receive(void* data, std::uint64_t bytes, int source, int tag = 0);
  void sendReceive(const void* sendData, std::uint64_t sendBytes, int destination,
                   void* receiveData, std::uint64_t receiveBytes, int source, int tag = 0);
  void broadcast(void* data, std::uint64_t bytes, int root = 0);
  // In place: `slots` holds one slot of `bytesPerProcess` per process, this process's own
  // slot already filled; on return every slot is filled.
  void allGather(void* slots, std::uint64_t bytesPerProcess);

  // Non-blocking forms. A send keeps its own copy of the data in a record until the
  // request completes, so the caller may reuse its buffer at once.
  Request sendNonBlocking(const void* data, std::uint64_t bytes, int destination, int tag = 0);
  Request receiveNonBlocking(void* data, std::uint64_t bytes, int source, int tag = 0);
  // 1 when the request is complete: its record is released and the request becomes
  // noRequest, which tests complete. 0 while it is pending.
  int test(Request& request);
  void waitAll();
  std::uint64_t pendingRequests() const;

  double reduceSum(double value) const;
  std::uint64_t reduceSum(std::uint64_t value) const;
  std::int64_t reduceSum(std::int64_t value) const;
  double reduceMax(double value) const;
  std::uint64_t reduceMax(std::uint64_t value) const;
  double reduceMin(double value) const;
  std::uint64_t reduceMin(std::uint64_t value) const;

  // The file name this process writes for a name shared by all: in several processes
  // each gets its rank in front of the suffix, a single process keeps the name.
  std::string getProcessLocalName(const std::string& name) const;

 private:
  struct Record {
    std::vector<char> buffer;  // owned copy of the data of a pending send
    void* target = nullptr;    // destination of a pending receive
    bool active = false;
  };
  std::vector<Record> records_;
};

}  // namespace gridmoor
