#include "formats/RestartFiles.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "common/Fatal.h"
#include "common/FileNames.h"
#include "input/Keywords.h"
#include "voxel/MpiExchange.h"

namespace gridmoor {

namespace {

void writeCount(std::ostream& out, std::uint64_t value) {
  std::array<char, 8> bytes;
  for (int k = 0; k < 8; ++k) bytes[k] = static_cast<char>((value >> (8 * k)) & 0xff);
  out.write(bytes.data(), 8);
}

std::uint64_t readCount(std::istream& in) {
  std::array<unsigned char, 8> bytes{};
  in.read(reinterpret_cast<char*>(bytes.data()), 8);
  std::uint64_t value = 0;
  for (int k = 7; k >= 0; --k) value = (value << 8) | bytes[k];
  return value;
}

}  // namespace

bool savesRestartStates(const Keywords& keywords) {
  const std::string& name = keywords.saveRestartFile();
  if (name.empty() || name == "0") return false;
  restartFileName(keywords, "", -1, 0);
  return true;
}

std::string restartFileName(const Keywords& keywords, const std::string& directory,
                            int loadCase, int kind) {
  const std::string& parameter = keywords.saveRestartFile();
  const std::string suffix = extensionOf(parameter);
  if (suffix != "gmr") {
    if (suffix == "das") fatal("Saving in DAS format for restart is not supported anymore...");
    fatal("Restart is supported only for gmr files.");
  }
  std::string name = joinPath(directory, parameter.substr(0, parameter.size() - 4));
  if (loadCase != -1) name += loadCaseSuffix(loadCase);
  if (kind == 1) name += "_correspondingStrainStressTensor";
  if (kind == 2) name += "_correspondingStressStrainTensor";
  return MpiExchange().getProcessLocalName(name + ".gmr");
}

InternalVariables::InternalVariables(std::uint64_t variables, std::vector<Colour> indices,
                                     std::size_t values, const std::string& name)
    : Vector<Real>(values, name),
      numberOfInternalVariables(variables),
      materialIndices(std::move(indices)) {}

void InternalVariables::save(const std::string& fileName) const {
  std::ofstream out(fileName, std::ios::out | std::ios::binary | std::ios::trunc);
  if (!out.is_open()) fatal("File " + fileName + " can not be opened");
  writeCount(out, numberOfInternalVariables);
  writeCount(out, materialIndices.size());
  for (const Colour index : materialIndices) out.put(static_cast<char>(index));
  writeBinary(out);
  // Closed here, not at the end of the scope, so that a failed write is seen: a stored state
  // that is not complete on disk must not count as one.
  out.close();
  if (!out) fatal("Failed to write the file " + fileName);
}

void InternalVariables::load(const std::string& fileName) {
  std::ifstream in(fileName, std::ios::in | std::ios::binary);
  if (!in.is_open()) fatal("File " + fileName + " can not be opened");
  const std::uint64_t variables = readCount(in);
  const std::uint64_t indexCount = readCount(in);
  if (!in) fatal("Failed to read the file " + fileName);
  if (variables != numberOfInternalVariables)
    fatal("Number of internal variables in file " + fileName +
          " does not match the one the object was initialized with.");
  const std::string indexMismatch = "The material index vector in file " + fileName +
                                    " does not match the one the object was initialized with.";
  // A count that differs is a mismatch already; it is never used to size a buffer.
  if (indexCount != materialIndices.size()) fatal(indexMismatch);
  for (const Colour expected : materialIndices) {
    const int byte = in.get();
    if (!in) fatal("Failed to read the file " + fileName);
    if (static_cast<Colour>(byte) != expected) fatal(indexMismatch);
  }
  readBinary(in);
  if (!in) fatal("Failed to read the file " + fileName);
}

std::string outputLockName(const std::string& directory) {
  return joinPath(directory, "outputLock");
}

void createOutputLock(const std::string& directory) {
  std::ofstream(outputLockName(directory), std::ios::out | std::ios::trunc).close();
}

void removeOutputLock(const std::string& directory) {
  std::error_code ignored;
  std::filesystem::remove(outputLockName(directory), ignored);
}

}  // namespace gridmoor
