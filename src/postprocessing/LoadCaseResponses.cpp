#include "postprocessing/LoadCaseResponses.h"

#include <omp.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <vector>

#include "common/Fatal.h"
#include "solvers/ElasticityImageLadder.h"
#include "voxel/StaticPartition.h"

namespace gridmoor {

namespace {

// File layout: a magic word, the record (19 doubles), the number of buffer doubles, the
// field's padded buffer as it is in memory. The padding is written too: the buffer is then
// one block, and the readers step over it by the field's own strides.
constexpr std::uint64_t kMagic = 0x31534e4f50534552ull;  // "RESPONS1"
constexpr std::size_t kRecordDoubles = 19;
constexpr std::uint64_t kHeaderBytes = 8 + kRecordDoubles * 8 + 8;

void toDoubles(const LoadCaseRecord& r, double* out) {
  std::copy(r.meanStrain.begin(), r.meanStrain.end(), out);
  std::copy(r.meanStress.begin(), r.meanStress.end(), out + 6);
  std::copy(r.energy.begin(), r.energy.end(), out + 12);
}

LoadCaseRecord fromDoubles(const double* in) {
  LoadCaseRecord r;
  std::copy(in, in + 6, r.meanStrain.begin());
  std::copy(in + 6, in + 12, r.meanStress.begin());
  std::copy(in + 12, in + 19, r.energy.begin());
  return r;
}

// Reads the header; false when the file is missing, foreign or shorter than it says.
bool readHeader(const std::string& name, LoadCaseRecord& record, std::uint64_t& bufferDoubles) {
  std::ifstream in(name, std::ios::binary);
  if (!in) return false;
  std::uint64_t magic = 0;
  double values[kRecordDoubles];
  in.read(reinterpret_cast<char*>(&magic), 8);
  in.read(reinterpret_cast<char*>(values), sizeof values);
  in.read(reinterpret_cast<char*>(&bufferDoubles), 8);
  if (!in || magic != kMagic) return false;
  std::error_code error;
  const std::uintmax_t bytes = std::filesystem::file_size(name, error);
  if (error || bytes != kHeaderBytes + bufferDoubles * 8) return false;
  record = fromDoubles(values);
  return true;
}

// Voigt dot product summed over the points of a voxel with the rule's weights.
inline double pointProduct(const double* a, const double* b, const double* weights,
                           std::uint64_t points) {
  double s = 0.0;
  for (std::uint64_t p = 0; p < points; ++p) {
    double d = 0.0;
    for (int k = 0; k < 6; ++k) d += a[6 * p + k] * b[6 * p + k];
    s += weights[p] * d;
  }
  return s;
}

}  // namespace

LoadCaseResponses::LoadCaseResponses(const std::array<std::string, 7>& fieldFiles,
                                     const std::array<std::string, 7>& markerFiles)
    : fieldFiles_(fieldFiles), markerFiles_(markerFiles) {}

bool LoadCaseResponses::finished(int loadCase) const {
  std::error_code error;
  if (!std::filesystem::exists(markerFiles_[loadCase], error)) return false;
  LoadCaseRecord record;
  std::uint64_t doubles = 0;
  return readHeader(fieldFiles_[loadCase], record, doubles);
}

LoadCaseRecord LoadCaseResponses::record(int loadCase, unsigned earlierMask,
                                         const ElasticityHyperelasticityImage& strain,
                                         const FFTImage& stress) {
  const std::uint64_t points = strain.pointsPerVoxel();
  const double* weights = strain.mainRule.weights.data();
  const std::uint64_t begin = strain.firstBegin;
  const std::uint64_t planes = strain.firstEnd - strain.firstBegin;
  const std::uint64_t ny = strain.nSecond, nz = strain.nThird, nc = strain.nComponents;
  const double voxels = static_cast<double>(strain.nFirst) * static_cast<double>(ny) *
                        static_cast<double>(nz);
  const double* e = strain.data();
  const double* s = stress.data();
  const std::uint64_t firstOffset = strain.firstOffset;
  const std::uint64_t planeStride = strain.planeStride, rowStride = strain.rowStride;

  // One pass for the means and the self product.
  std::vector<std::array<double, 13>> partial(static_cast<std::size_t>(omp_get_max_threads()));
  parallelForStatic(planes, [&](std::uint64_t b, std::uint64_t end) {
    std::array<double, 13> sums{};
    for (std::uint64_t x = begin + b; x < begin + end; ++x)
      for (std::uint64_t y = 0; y < ny; ++y) {
        const std::uint64_t row = (x - firstOffset) * planeStride + y * rowStride;
        for (std::uint64_t z = 0; z < nz; ++z) {
          const double* ev = e + row + z * nc;
          const double* sv = s + row + z * nc;
          for (std::uint64_t p = 0; p < points; ++p)
            for (int k = 0; k < 6; ++k) {
              sums[k] += weights[p] * ev[6 * p + k];
              sums[6 + k] += weights[p] * sv[6 * p + k];
            }
          sums[12] += pointProduct(ev, sv, weights, points);
        }
      }
    partial[static_cast<std::size_t>(omp_get_thread_num())] = sums;
  });
  std::array<double, 13> total{};
  for (const auto& p : partial)
    for (int i = 0; i < 13; ++i) total[i] += p[i];
  LoadCaseRecord result;
  for (int k = 0; k < 6; ++k) {
    result.meanStrain[k] = total[k] / voxels;
    result.meanStress[k] = total[6 + k] / voxels;
  }
  result.energy[loadCase] = total[12] / voxels;

  // Products with the earlier cases: their strains come back from disk a block of planes at
  // a time, against the stress of this case in memory.
  const std::uint64_t bufferDoubles = strain.size();
  const std::uint64_t blockPlanes = responseReadBlockPlanes(planes, planeStride * 8);
  std::vector<double> block;
  for (int i = 0; i < loadCase; ++i) {
    if (!(earlierMask & (1u << i))) continue;
    block.resize(blockPlanes * planeStride);
    LoadCaseRecord ignored;
    std::uint64_t doubles = 0;
    if (!readHeader(fieldFiles_[i], ignored, doubles) || doubles != bufferDoubles)
      fatal(fieldFiles_[i] + " can not be read as the response of an earlier load case.");
    std::ifstream in(fieldFiles_[i], std::ios::binary);
    in.seekg(static_cast<std::streamoff>(kHeaderBytes));
    double sum = 0.0;
    for (std::uint64_t first = 0; first < planes; first += blockPlanes) {
      const std::uint64_t count = std::min(blockPlanes, planes - first);
      const std::uint64_t want = std::min(count * planeStride,
                                          bufferDoubles - first * planeStride);
      in.read(reinterpret_cast<char*>(block.data()), static_cast<std::streamsize>(want * 8));
      if (!in) fatal(fieldFiles_[i] + " can not be read as the response of an earlier load case.");
      std::vector<double> sums(partial.size(), 0.0);
      parallelForStatic(count, [&](std::uint64_t b, std::uint64_t end) {
        double mine = 0.0;
        for (std::uint64_t q = b; q < end; ++q)
          for (std::uint64_t y = 0; y < ny; ++y) {
            const std::uint64_t local = q * planeStride + y * rowStride;
            const std::uint64_t here = (first + q) * planeStride + y * rowStride;
            for (std::uint64_t z = 0; z < nz; ++z)
              mine += pointProduct(block.data() + local + z * nc, s + here + z * nc, weights,
                                   points);
          }
        sums[static_cast<std::size_t>(omp_get_thread_num())] = mine;
      });
      for (double v : sums) sum += v;
    }
    result.energy[i] = sum / voxels;
  }

  std::ofstream out(fieldFiles_[loadCase], std::ios::binary | std::ios::trunc);
  double values[kRecordDoubles];
  toDoubles(result, values);
  out.write(reinterpret_cast<const char*>(&kMagic), 8);
  out.write(reinterpret_cast<const char*>(values), sizeof values);
  out.write(reinterpret_cast<const char*>(&bufferDoubles), 8);
  out.write(reinterpret_cast<const char*>(e), static_cast<std::streamsize>(bufferDoubles * 8));
  out.close();
  if (!out) fatal(fieldFiles_[loadCase] + " can not be opened");
  return result;
}

void LoadCaseResponses::markFinished(int loadCase) const {
  std::ofstream marker(markerFiles_[loadCase]);
  if (!marker) fatal(markerFiles_[loadCase] + " can not be opened");
}

LoadCaseRecord LoadCaseResponses::read(int loadCase) const {
  LoadCaseRecord record;
  std::uint64_t doubles = 0;
  if (!readHeader(fieldFiles_[loadCase], record, doubles))
    fatal(fieldFiles_[loadCase] + " can not be read as the response of a finished load case.");
  return record;
}

bool LoadCaseResponses::removeAll() const {
  std::error_code ignored;
  bool removed = false;
  for (int c = 0; c < 7; ++c) {
    removed = std::filesystem::remove(fieldFiles_[c], ignored) || removed;
    removed = std::filesystem::remove(markerFiles_[c], ignored) || removed;
  }
  return removed;
}

std::uint64_t responseReadBlockPlanes(std::uint64_t planes, std::uint64_t planeBytes) {
  const std::uint64_t fitting = (std::uint64_t{16} << 20) / std::max<std::uint64_t>(planeBytes, 1);
  return std::max<std::uint64_t>(1, std::min(planes, fitting));
}

EffectiveMatrix measuredByEnergy(const std::array<LoadCaseRecord, 7>& records, unsigned mask,
                                 double increment) {
  EffectiveMatrix m;
  const double scale = 1.0 / (increment * increment);
  // Case j holds its products with the earlier cases; the energy form is symmetric.
  for (int j = 0; j < 6; ++j) {
    if (!(mask & (1u << j))) continue;
    for (int i = 0; i <= j; ++i) {
      if (!(mask & (1u << i))) continue;
      m(i, j) = records[j].energy[i] * scale;
      m(j, i) = m(i, j);
    }
  }
  return m;
}

EffectiveMatrix measuredByStrain(const std::array<LoadCaseRecord, 7>& records, unsigned mask,
                                 double increment, bool stressCases) {
  EffectiveMatrix m;
  for (int j = 0; j < 6; ++j) {
    if (!(mask & (1u << j))) continue;
    const std::array<double, 6>& response =
        stressCases ? records[j].meanStrain : records[j].meanStress;
    for (int i = 0; i < 6; ++i) m(i, j) = response[i] / increment;
  }
  return m;
}

}  // namespace gridmoor
