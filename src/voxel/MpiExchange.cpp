#include "voxel/MpiExchange.h"

#include "voxel/StaticPartition.h"

namespace gridmoor {

int MpiExchange::getRank() const { return 0; }

int MpiExchange::getNumberOfProcesses() const { return 1; }

void MpiExchange::getDataRange(std::uint64_t size, std::uint64_t& begin, std::uint64_t& end,
                               int rank) const {
  const int processes = getNumberOfProcesses();
  if (processes == 1) {
    begin = 0;
    end = size;
    return;
  }
  // Several processes: contiguous slabs, the first size % processes one plane thicker.
  const IndexRange r = staticPartition(size, static_cast<std::uint64_t>(rank < 0 ? getRank() : rank),
                                       static_cast<std::uint64_t>(processes));
  begin = r.begin;
  end = r.end;
}

void MpiExchange::barrier() const {}

// A process never sends to itself, so with one process there is no partner and these
// return at once with the buffers unchanged.
void MpiExchange::send(const void*, std::uint64_t, int, int) {}
void MpiExchange::receive(void*, std::uint64_t, int, int) {}
void MpiExchange::sendReceive(const void*, std::uint64_t, int, void*, std::uint64_t, int, int) {}
void MpiExchange::broadcast(void*, std::uint64_t, int) {}
void MpiExchange::allGather(void*, std::uint64_t) {}

MpiExchange::Request MpiExchange::sendNonBlocking(const void* data, std::uint64_t bytes, int,
                                                  int) {
  Record record;
  const char* p = static_cast<const char*>(data);
  record.buffer.assign(p, p + bytes);
  record.active = true;
  records_.push_back(std::move(record));
  return records_.size() - 1;
}

MpiExchange::Request MpiExchange::receiveNonBlocking(void* data, std::uint64_t, int, int) {
  Record record;
  record.target = data;
  record.active = true;
  records_.push_back(std::move(record));
  return records_.size() - 1;
}

int MpiExchange::test(Request& request) {
  // Nothing is in flight in one process: a request is complete at its first test.
  if (request < records_.size()) records_[request] = Record{};
  request = noRequest;
  if (pendingRequests() == 0) records_.clear();
  return 1;
}

void MpiExchange::waitAll() { records_.clear(); }

std::uint64_t MpiExchange::pendingRequests() const {
  std::uint64_t n = 0;
  for (const Record& record : records_) n += record.active ? 1 : 0;
  return n;
}

double MpiExchange::reduceSum(double value) const { return value; }
std::uint64_t MpiExchange::reduceSum(std::uint64_t value) const { return value; }
std::int64_t MpiExchange::reduceSum(std::int64_t value) const { return value; }
double MpiExchange::reduceMax(double value) const { return value; }
std::uint64_t MpiExchange::reduceMax(std::uint64_t value) const { return value; }
double MpiExchange::reduceMin(double value) const { return value; }
std::uint64_t MpiExchange::reduceMin(std::uint64_t value) const { return value; }

std::string MpiExchange::getProcessLocalName(const std::string& name) const {
  if (getNumberOfProcesses() < 2) return name;
  const std::string::size_type dot = name.find_last_of('.');
  const std::string::size_type slash = name.find_last_of("/\\");
  const std::string rank = "_" + std::to_string(getRank());
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return name + rank;
  return name.substr(0, dot) + rank + name.substr(dot);
}

}  // namespace gridmoor
