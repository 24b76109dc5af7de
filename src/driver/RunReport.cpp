#include "driver/RunReport.h"

#include <sys/statvfs.h>

#include <cinttypes>
#include <cstdio>
#include <cstring>

namespace gridmoor {

namespace {

void row(const char* label, const Timer& t) { std::printf("%-50s %10.2f sec\n", label, t.seconds()); }

void logMapRow(const char* key, double seconds) { std::printf("\t%s %.2f [s]\n", key, seconds); }

// The directory part of path, or "." for a bare name, so statvfs asks the right file system.
std::string queryPath(const std::string& path) {
  std::string p = path;
  if (!p.empty() && p.front() == '"') p.erase(0, 1);
  const size_t slash = p.find_last_of("/\\");
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : p.substr(0, slash);
}

std::uint64_t diskQuery(const std::string& path, bool freeSpace) {
  if (path.rfind("\\\\", 0) == 0) return 0;
  struct statvfs info;
  if (::statvfs(queryPath(path).c_str(), &info) != 0) {
    std::printf("Disk space checking not available!\n");
    return 0;
  }
  const std::uint64_t blocks = freeSpace ? info.f_bavail : info.f_blocks;
  return blocks * static_cast<std::uint64_t>(info.f_frsize);
}

}  // namespace

void printRunReport(const RunTimers& t, const RunReportFigures& f) {
  std::printf("\n\n%-50s %10i\n\n", "Number of threads:", f.threads);
  row("Runtime:", t.total);
  row(" - Reading Input-File", t.input);
  row(" - Initializing Materials", t.materials);
  row(" - Reading and Resampling LDT-File", t.ldt);
  row(" - Reading and Resampling LOF-File", t.lof);
  row(" - Eigenstrain/Eigenstress", t.eigenstrain);
  row(" - Thermal Expansion", t.thermal);
  row(" - Memory Allocation and FFTW", t.allocation);
  row(" - Reference Material", t.referenceMaterial);
  row(" - Internal Variables", t.internalVariables);
  row(" - External Force", t.externalForce);
  std::printf("%-50s %10.2f sec (FFT %.2f sec)\n", " - Iterative Solver", t.solver.seconds(),
              f.fftSeconds);
  row(" - Output of VTK/VTI-Files", t.outputVtk);
  row(" - Output of DAS-Files", t.outputDas);
  row(" - Deformation", t.deformation);
  row(" - Temporary Files", t.temporaryFiles);
  row(" - Homogenization", t.homogenization);
  row(" - Averaging Internal Variables", t.averagingInternalVariables);
  row(" - Min/Max of Internal Variables", t.minMaxInternalVariables);
  row(" - Averaging Strain/Stress", t.averagingStrainStress);
  row(" - Voigt/Reuss bounds", t.bounds);
  std::printf("%-50s %" PRIu64 " KB\n", " - Memory usage estimate", f.estimateKB);
  std::printf("%-50s %" PRIu64 " KB\n", " - Memory usage real", f.realKB);

  std::puts("\n\n\n<LogMap>");
  std::printf("\tNumberOfThreads %d [1]\n", f.threads);
  std::printf("\tMemory:Estimate %" PRIu64 " [KB]\n", f.allocatedKB);
  std::printf("\tMemory:Real %" PRIu64 " [KB]\n", f.realKB);
  std::printf("\tIterations %d [1]\n", f.iterations);
  logMapRow("Runtime:Total", t.total.seconds());
  logMapRow("Runtime:ReadingInputFile", t.input.seconds());
  logMapRow("Runtime:InitializeMaterials", t.materials.seconds());
  logMapRow("Runtime:ReadingLDT", t.ldt.seconds());
  logMapRow("Runtime:ReadingLOF", t.lof.seconds());
  logMapRow("Runtime:EigenstrainEigenstress", t.eigenstrain.seconds());
  logMapRow("Runtime:ThermalExpansion", t.thermal.seconds());
  logMapRow("Runtime:MemoryAllocAndFFTInitialize", t.allocation.seconds());
  logMapRow("Runtime:ReferenceMaterial", t.referenceMaterial.seconds());
  logMapRow("Runtime:InternalVariables", t.internalVariables.seconds());
  logMapRow("Runtime:ExternalForce", t.externalForce.seconds());
  logMapRow("Runtime:IterativeSolver", t.solver.seconds());
  logMapRow("Runtime:IterativeSolverFFT", f.fftSeconds);
  logMapRow("Runtime:IterativeSolverWithoutFFT", t.solver.seconds() - f.fftSeconds);
  logMapRow("Runtime:OutputVTK", t.outputVtk.seconds());
  logMapRow("Runtime:OutputDAS", t.outputDas.seconds());
  logMapRow("Runtime:Deformation", t.deformation.seconds());
  logMapRow("Runtime:TemporaryFiles", t.temporaryFiles.seconds());
  logMapRow("Runtime:Homogenization", t.homogenization.seconds());
  logMapRow("Runtime:AveragingInternalVariables", t.averagingInternalVariables.seconds());
  logMapRow("Runtime:AveragingStrainStress", t.averagingStrainStress.seconds());
  // The host parses this key with this spelling.
  logMapRow("Runtime:VoigtReusBounds", t.bounds.seconds());
  std::printf("</LogMap>\n");
}

std::uint64_t realMemoryKB() {
  std::FILE* status = std::fopen("/proc/self/status", "r");
  if (!status) return 0;
  char line[256];
  std::uint64_t kb = 0;
  while (std::fgets(line, sizeof line, status)) {
    if (std::strncmp(line, "VmRSS:", 6) == 0) {
      std::sscanf(line + 6, "%" SCNu64, &kb);
      break;
    }
  }
  std::fclose(status);
  return kb;
}

std::uint64_t freeDiskSpace(const std::string& path) { return diskQuery(path, true); }
std::uint64_t diskSize(const std::string& path) { return diskQuery(path, false); }

}  // namespace gridmoor
