#include "postprocessing/ResultFile.h"

#include <cmath>
#include <filesystem>
#include <ostream>
#include <system_error>

#include "common/Fatal.h"
#include "common/FileNames.h"
#include "input/LoadComponents.h"

namespace gridmoor {

namespace {

constexpr const char* kAxisKeys[3] = {"Parameter:Vector:CoordinateAxisX",
                                      "Parameter:Vector:CoordinateAxisY",
                                      "Parameter:Vector:CoordinateAxisZ"};


bool isIdentity(const std::array<double, 9>& matrix) {
  for (int k = 0; k < 9; ++k) {
    if (matrix[k] != (k % 4 == 0 ? 1.0 : 0.0)) return false;
  }
  return true;
}

void writeScalar(std::ostream& out, const std::string& key, Real value) {
  out << key << ' ' << value << '\n';
}

void writeValues(std::ostream& out, std::span<const Real> values) {
  for (std::size_t k = 0; k < values.size(); ++k) {
    if (k > 0) out << ',';
    out << values[k];
  }
}

// The 3x3 averages are written column by column: row r of the file holds entries r, r + 3 and
// r + 6 of the row-major array.
void writeTensorRows(std::ostream& out, const std::string& key, const std::array<Real, 9>& t) {
  const std::array<Real, 9> transposed = {t[0], t[3], t[6], t[1], t[4], t[7], t[2], t[5], t[8]};
  writeMatrixRows(out, key, transposed, 3);
}

// One region's block; suffix is empty for the whole grid and "OfMaterial_c" for a colour.
void writeAverageSet(std::ostream& out, const std::string& formulation,
                     const StrainStressAverages& a, const std::string& suffix) {
  const std::string hydrostatic = "Scalar:HydrostaticStrainStress:AverageHydrostatic";
  const std::string vonMises = "Scalar:VonMisesStrainStress:AverageVonMises";
  if (formulation == "DeformationGradient") {
    writeTensorRows(out, "Matrix:AverageDeformationGradient" + suffix, a.deformationGradient);
    writeTensorRows(out, "Matrix:AverageFirstPK" + suffix, a.firstPK);
    writeVector(out, "Vector:AverageGreenLagrangeStrain" + suffix, a.strain);
    writeVector(out, "Vector:AverageSecondPKStress" + suffix, a.stress);
    writeVector(out, "Vector:AverageCauchyStress" + suffix, a.cauchyStress);
    writeScalar(out, hydrostatic + "GreenLagrangeStrain" + suffix, hydrostaticPart(a.strain));
    writeScalar(out, hydrostatic + "SecondPKStress" + suffix, hydrostaticPart(a.stress));
    writeScalar(out, hydrostatic + "CauchyStress" + suffix, hydrostaticPart(a.cauchyStress));
    writeScalar(out, vonMises + "GreenLagrangeStrain" + suffix, vonMisesOfStrain(a.strain));
    writeScalar(out, vonMises + "SecondPKStress" + suffix, vonMisesOfStress(a.stress));
    writeScalar(out, vonMises + "CauchyStress" + suffix, vonMisesOfStress(a.cauchyStress));
    return;
  }
  // The primary unknown's average comes first; the scalars keep strain before stress.
  const bool strainFirst = formulation == "Strain" || formulation == "Polarization";
  if (strainFirst) {
    writeVector(out, "Vector:AverageStrain" + suffix, a.strain);
    writeVector(out, "Vector:AverageStress" + suffix, a.stress);
  } else {
    writeVector(out, "Vector:AverageStress" + suffix, a.stress);
    writeVector(out, "Vector:AverageStrain" + suffix, a.strain);
  }
  writeScalar(out, hydrostatic + "Strain" + suffix, hydrostaticPart(a.strain));
  writeScalar(out, hydrostatic + "Stress" + suffix, hydrostaticPart(a.stress));
  writeScalar(out, vonMises + "Strain" + suffix, vonMisesOfStrain(a.strain));
  writeScalar(out, vonMises + "Stress" + suffix, vonMisesOfStress(a.stress));
}

void writeLoad(std::ostream& out, const KeywordsElasticity& keywords, double time) {
  std::vector<double> load;
  keywords.macroscopicLoadAt(time, load);
  const LoadKind kind = keywords.macroscopicLoadKind();
  if (componentCount(kind) == 9) {
    const unsigned mask = keywords.mixedTensorMask();
    for (int slot = 0; slot < 9; ++slot) {
      const char* word = (mask & (1u << slot)) ? "DeformationGradient" : "FirstPK";
      writeScalar(out, std::string("Parameter:Scalar:") + word + std::string(kTensorWords[slot]),
                  load[slot]);
    }
    return;
  }
  const unsigned mask = keywords.mixedMask();
  for (int slot = 0; slot < 6; ++slot) {
    const std::string word = kind != LoadKind::StrainStress ? loadKindName(kind)
                             : (mask & (1u << slot))        ? "Strain"
                                                            : "Stress";
    writeScalar(out, "Parameter:Scalar:" + word + std::string(kVoigtWords[slot]), load[slot]);
  }
}

}  // namespace

std::string resultFileName(const KeywordsElasticity& keywords, const std::string& directory,
                           int step) {
  return stepFileName(keywords, joinPath(directory, keywords.effectiveMatrixFilename()), step);
}

std::ofstream openResultFile(const KeywordsElasticity& keywords, const std::string& directory,
                             int step) {
  const std::string name = resultFileName(keywords, directory, step);
  // An existing empty file (say, created by the host beforehand) still gets the header.
  std::error_code error;
  const bool isNew = !std::filesystem::exists(name, error) ||
                     std::filesystem::file_size(name, error) == 0 || error;
  std::ofstream out(name, std::ios::app);
  if (!out) fatal(name + " can not be opened \n");
  out.precision(keywords.effectiveMatrixPrecision());
  if (isNew) {
    writeResultHeader(out, keywords, step);
    out.flush();
  }
  return out;
}

void writeResultHeader(std::ostream& out, const KeywordsElasticity& keywords, int step) {
  const std::string formulation = keywords.problemFormulation();
  if (formulation == "Strain" || formulation == "Stress" || formulation == "DeformationGradient") {
    const std::array<double, 9> axes = keywords.coordinateSystemMatrix();
    if (!isIdentity(axes)) {
      for (int row = 0; row < 3; ++row) {
        writeVector(out, kAxisKeys[row], std::span<const Real>(axes.data() + 3 * row, 3));
      }
    }
  }
  // The values of a step are those at its end, where its solution holds.
  const double time = keywords.timeOfStep(step + 1);
  if (!keywords.isSingleStep()) writeScalar(out, "Parameter:Scalar:Time", time);
  if (!keywords.isZeroThermalLoad()) {
    writeScalar(out, "Parameter:Scalar:TemperatureChange", keywords.temperatureChangeAt(time));
  }
  if (keywords.writeEffectiveMatrix() && keywords.computeThermalExpansion()) {
    writeScalar(out, "Parameter:Scalar:TemperatureChangeIncrementForHomogenization",
                keywords.macroscopicTemperatureChangeIncrement());
  }
  writeLoad(out, keywords, time);
  if (keywords.numberOfMechanicalLoadCases() > 0) {
    writeScalar(out,
                "Parameter:Scalar:" + loadKindName(keywords.macroscopicLoadKind()) +
                    "IncrementForHomogenization",
                keywords.macroscopicLoadCaseIncrement());
    out << "Loadcases ";
    const unsigned mask = keywords.loadCaseMask();
    bool first = true;
    for (int c = 0; c < 6; ++c) {
      if (!(mask & (1u << c))) continue;
      out << (first ? "" : ",") << c + 1;
      first = false;
    }
    out << '\n';
  }
}

void writeVector(std::ostream& out, const std::string& key, std::span<const Real> values) {
  out << key << ' ';
  writeValues(out, values);
  out << '\n';
}

void writeMatrixRows(std::ostream& out, const std::string& key, std::span<const Real> matrix,
                     std::size_t columns) {
  const std::size_t rows = columns == 0 ? 0 : matrix.size() / columns;
  for (std::size_t r = 0; r < rows; ++r) {
    out << key << ':' << r + 1 << "  ";
    writeValues(out, matrix.subspan(r * columns, columns));
    out << '\n';
  }
}

void writeMaskedRows(std::ostream& out, const std::string& key, std::span<const Real> matrix,
                     std::size_t columns, unsigned rowMask, unsigned columnMask) {
  const std::size_t rows = columns == 0 ? 0 : matrix.size() / columns;
  for (std::size_t r = 0; r < rows; ++r) {
    if (!(rowMask & (1u << r))) continue;
    // A written row keeps its number in the full matrix, so the reader can place it.
    out << key << ':' << r + 1 << "  ";
    bool first = true;
    for (std::size_t c = 0; c < columns; ++c) {
      if (!(columnMask & (1u << c))) continue;
      out << (first ? "" : ",") << matrix[r * columns + c];
      first = false;
    }
    out << '\n';
  }
}

void writeVolumeFractions(std::ostream& out, const std::vector<MaterialAverages>& materials) {
  for (const MaterialAverages& m : materials) {
    if (m.volumeFraction <= 0.0) continue;
    writeScalar(out, "Scalar:VolumeFractions:Material_" + std::to_string(m.colour),
                m.volumeFraction);
  }
}

void writeAverages(std::ostream& out, const KeywordsElasticity& keywords,
                   const ResultAverages& averages) {
  if (!keywords.averageStrainStress()) return;
  writeAverages(out, keywords.problemFormulation(), averages);
}

void writeAverages(std::ostream& out, const std::string& formulation,
                   const ResultAverages& averages) {
  writeAverageSet(out, formulation, averages.overall, "");
  // All fractions first, then one block per colour: the host reads the fractions as a group.
  writeVolumeFractions(out, averages.materials);
  for (const MaterialAverages& m : averages.materials) {
    if (m.volumeFraction <= 0.0) continue;
    writeAverageSet(out, formulation, m.values, "OfMaterial_" + std::to_string(m.colour));
  }
}

void writeSurfaceForces(std::ostream& out, const KeywordsElasticity& keywords,
                        const SurfaceForces& forces) {
  if (!keywords.averageSurfaceForces()) return;
  // The Y and Z pairs go minus first, the X pair plus first: readers depend on this order.
  writeVector(out, "Vector:AverageSurfaceForceX+", forces.xPlus);
  writeVector(out, "Vector:AverageSurfaceForceX-", forces.xMinus);
  writeVector(out, "Vector:AverageSurfaceForceY-", forces.yMinus);
  writeVector(out, "Vector:AverageSurfaceForceY+", forces.yPlus);
  writeVector(out, "Vector:AverageSurfaceForceZ-", forces.zMinus);
  writeVector(out, "Vector:AverageSurfaceForceZ+", forces.zPlus);
}

void writeComputationalCosts(std::ostream& out, const KeywordsElasticity& keywords,
                             std::uint64_t matrixVectorProducts, std::uint64_t newtonRaphsonSteps) {
  if (!keywords.writeNumberOfMatrixVectorProductsAndNewtonRaphsonSteps()) return;
  out << "Scalar:ComputationalCosts:NumberOfMatrixVectorProducts " << matrixVectorProducts << '\n'
      << "Scalar:ComputationalCosts:NumberOfNewtonRaphsonSteps " << newtonRaphsonSteps << '\n';
}

// hydrostatic = (v11 + v22 + v33) / 3.
Real hydrostaticPart(std::span<const Real, 6> voigt) {
  return (voigt[0] + voigt[1] + voigt[2]) / 3.0;
}

// Strain with engineering shear g: the tensor shear is g / 2, so
// e_dev : e_dev = sum_i (e_ii - tr/3)^2 + 2 sum (g / 2)^2, and vM = sqrt(2/3 e_dev : e_dev).
Real vonMisesOfStrain(std::span<const Real, 6> strain) {
  const Real mean = hydrostaticPart(strain);
  Real norm = 0.0;
  for (int i = 0; i < 3; ++i) norm += (strain[i] - mean) * (strain[i] - mean);
  for (int i = 3; i < 6; ++i) norm += 0.5 * strain[i] * strain[i];
  return std::sqrt(2.0 / 3.0 * norm);
}

// Stress with plain shear t: s_dev : s_dev = sum_i (s_ii - tr/3)^2 + 2 sum t^2, and
// vM = sqrt(3/2 s_dev : s_dev).
Real vonMisesOfStress(std::span<const Real, 6> stress) {
  const Real mean = hydrostaticPart(stress);
  Real norm = 0.0;
  for (int i = 0; i < 3; ++i) norm += (stress[i] - mean) * (stress[i] - mean);
  for (int i = 3; i < 6; ++i) norm += 2.0 * stress[i] * stress[i];
  return std::sqrt(1.5 * norm);
}

}  // namespace gridmoor
