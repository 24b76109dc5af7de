// The per-step result text file of plain "key value" lines read by the host application: its
// name, its header, the line format and the averages, surface forces and costs written to it.
#pragma once

#include <array>
#include <cstdint>
#include <fstream>
#include <span>
#include <string>
#include <vector>

#include "common/Types.h"
#include "input/KeywordsElasticity.h"

namespace gridmoor {

// Averages of one region (the whole grid or one colour). Strain-like vectors hold engineering
// shear, stress-like vectors plain shear, both in Voigt order 11, 22, 33, 23, 13, 12. At large
// strain `strain` is the Green-Lagrange strain and `stress` the second Piola-Kirchhoff stress;
// the full tensors are row-major and only used there.
struct StrainStressAverages {
  std::array<Real, 6> strain{};
  std::array<Real, 6> stress{};
  std::array<Real, 6> cauchyStress{};
  std::array<Real, 9> deformationGradient{};
  std::array<Real, 9> firstPK{};
};

struct MaterialAverages {
  Colour colour = 0;
  // Voxels of the colour over all voxels of the grid; 0 means the colour has no voxel.
  Real volumeFraction = 0.0;
  StrainStressAverages values;
};

struct ResultAverages {
  StrainStressAverages overall;
  // In the order of the geometry's colours in use.
  std::vector<MaterialAverages> materials;
};

// Mean traction on each face pair of the cell, as the solver computes them.
struct SurfaceForces {
  std::vector<Real> xPlus, xMinus, yPlus, yMinus, zPlus, zMinus;
};

// EffectiveMatrixFilename in directory (unless absolute). A run of several steps writes one
// file per step: the one-based step number is appended to the stem ("result.txt" becomes
// "result_3.txt" for the third step, step index 2).
std::string resultFileName(const KeywordsElasticity& keywords, const std::string& directory,
                           int step);

// Opens the result file of step (zero-based, as the time grid counts) for appending with the
// precision EffectiveMatrixPrecision, and writes the header when the file is new. An unopenable
// file ends the run.
std::ofstream openResultFile(const KeywordsElasticity& keywords, const std::string& directory,
                             int step);
// The header lines of step: coordinate axes, time, temperature change, the load and the load
// cases of homogenization.
void writeResultHeader(std::ostream& out, const KeywordsElasticity& keywords, int step);

// "key a,b,c"
void writeVector(std::ostream& out, const std::string& key, std::span<const Real> values);
// "key:1  a,b,..." for each row of a row-major matrix of the given column count.
void writeMatrixRows(std::ostream& out, const std::string& key, std::span<const Real> matrix,
                     std::size_t columns);
// Only the rows whose bit is set in rowMask, each holding only the columns set in columnMask.
void writeMaskedRows(std::ostream& out, const std::string& key, std::span<const Real> matrix,
                     std::size_t columns, unsigned rowMask, unsigned columnMask);

// "Scalar:VolumeFractions:Material_c f" for each colour that has voxels.
void writeVolumeFractions(std::ostream& out, const std::vector<MaterialAverages>& materials);
// The averages block of the formulation, overall then per colour; nothing unless
// AverageStrainStress is set.
void writeAverages(std::ostream& out, const KeywordsElasticity& keywords,
                   const ResultAverages& averages);
void writeAverages(std::ostream& out, const std::string& formulation,
                   const ResultAverages& averages);
// Nothing unless AverageSurfaceForces is set.
void writeSurfaceForces(std::ostream& out, const KeywordsElasticity& keywords,
                        const SurfaceForces& forces);
// Nothing unless WriteNumberOfMatrixVectorProductsAndNewtonRaphsonSteps is set.
void writeComputationalCosts(std::ostream& out, const KeywordsElasticity& keywords,
                             std::uint64_t matrixVectorProducts, std::uint64_t newtonRaphsonSteps);

// Scalars of a Voigt vector; strain-like vectors carry engineering shear.
Real hydrostaticPart(std::span<const Real, 6> voigt);
Real vonMisesOfStrain(std::span<const Real, 6> strain);
Real vonMisesOfStress(std::span<const Real, 6> stress);

}  // namespace gridmoor
