// The responses of the homogenization load cases of one step, kept in temporary files beside
// the solution so that the energy products of all case pairs can be formed and a restarted
// step can skip the cases it finished.
#pragma once

#include <array>
#include <string>

#include "postprocessing/EffectiveMatrix.h"

namespace gridmoor {

class FFTImage;
class ElasticityHyperelasticityImage;

// What one finished case leaves for the matrices. Strains carry engineering shear and stresses
// plain shear, so the Voigt dot product of a strain and a stress is their tensor product.
struct LoadCaseRecord {
  std::array<double, 6> meanStrain{};
  std::array<double, 6> meanStress{};
  // energy[i]: cell mean of strain_i . stress_c for each earlier mechanical case i recorded
  // with this one, and energy[c] for the case itself.
  std::array<double, 7> energy{};
};

class LoadCaseResponses {
 public:
  // fieldFiles[c] is the temporary file of case c, markerFiles[c] its empty marker.
  LoadCaseResponses(const std::array<std::string, 7>& fieldFiles,
                    const std::array<std::string, 7>& markerFiles);

  // Case c finished in an earlier attempt at this step: its marker and a complete file exist.
  // A marker without its file does not count: the case has to run again.
  bool finished(int loadCase) const;
  // Means and self product of the response (strain field and its stress, same layout, real
  // space), the products with the files of the earlier cases in earlierMask (bit i: case i),
  // then the case's file. Returns what the file holds.
  LoadCaseRecord record(int loadCase, unsigned earlierMask,
                        const ElasticityHyperelasticityImage& strain, const FFTImage& stress);
  void markFinished(int loadCase) const;
  // The record of a finished case, from its file.
  LoadCaseRecord read(int loadCase) const;
  // Every case's file and marker; missing ones are passed over. True when any was removed.
  bool removeAll() const;

 private:
  std::array<std::string, 7> fieldFiles_;
  std::array<std::string, 7> markerFiles_;
};

// Planes of the buffer in which record() reads the responses of earlier cases back, for a
// field of `planes` planes of planeBytes each: as many as fit in 16 MiB, at least one.
std::uint64_t responseReadBlockPlanes(std::uint64_t planes, std::uint64_t planeBytes);

// The matrix the mechanical cases in mask measure, with unit loads of size increment: the
// stiffness when the cases prescribe mean strains, the compliance when they prescribe mean
// stresses. Entries of cases outside the mask stay 0.
// Energy: entry (i, j) is the cell mean of strain_i . stress_j over the increment squared;
// by Hill's lemma it is the mean response of case j in slot i for a consistent solution.
EffectiveMatrix measuredByEnergy(const std::array<LoadCaseRecord, 7>& records, unsigned mask,
                                 double increment);
// Strain: column j is the mean dual response of case j (stress for strain cases, strain for
// stress cases) over the increment.
EffectiveMatrix measuredByStrain(const std::array<LoadCaseRecord, 7>& records, unsigned mask,
                                 double increment, bool stressCases);

}  // namespace gridmoor
