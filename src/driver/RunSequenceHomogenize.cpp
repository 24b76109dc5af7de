// The homogenization end of a step: the load cases of the effective matrices with their
// temporary responses, the matrices and thermal tensors in the result file, and the Voigt and
// Reuss bounds.
#include <cstdio>
#include <iostream>
#include <sstream>

#include "common/Fatal.h"
#include "common/FileNames.h"
#include "driver/Console.h"
#include "driver/RunSequence.h"
#include "input/KeyWordsLattora.h"
#include "materials/IsotropicLinearElasticMaterial.h"
#include "materials/MaterialVector.h"
#include "operators/FFTImage.h"
#include "postprocessing/EffectiveMatrix.h"
#include "postprocessing/LoadCaseResponses.h"
#include "postprocessing/ResultFile.h"
#include "postprocessing/VoigtReussBounds.h"
#include "solvers/LoadStepSolver.h"
#include "voxel/Geometry.h"

namespace gridmoor {

namespace {

std::ostringstream resultText(const KeywordsElasticity& keywords) {
  std::ostringstream text;
  text.precision(keywords.effectiveMatrixPrecision());
  return text;
}

void zeroRows(std::ostream& out, const std::string& key) { EffectiveMatrix().writeRows(out, key); }

void invertOrStop(EffectiveMatrix& m, const std::string& what) {
  if (!m.invert()) fatal("The " + what + " is singular and can not be inverted.");
}

std::array<double, 6> scaled(const std::array<double, 6>& v, double factor) {
  std::array<double, 6> r{};
  for (int k = 0; k < 6; ++k) r[k] = factor * v[k];
  return r;
}

std::array<double, 6> product(const EffectiveMatrix& m, const std::array<double, 6>& v) {
  std::array<double, 6> r{};
  for (int i = 0; i < 6; ++i)
    for (int k = 0; k < 6; ++k) r[i] += m(i, k) * v[k];
  return r;
}

}  // namespace

LoadCaseResponses RunSequence::loadCaseResponses(int step) const {
  std::array<std::string, 7> fieldFiles, markers;
  for (int c = 0; c < 7; ++c) {
    fieldFiles[c] = loadCaseResponseFileName(*keywords_, outputDirectory_, step, c);
    markers[c] = finishedFileName(*keywords_, outputDirectory_, step, c);
  }
  return LoadCaseResponses(fieldFiles, markers);
}

// The result rows go to the step's result file and, so that a user sees them, to the console.
void RunSequence::writeResultText(int step, const std::string& text) {
  std::ofstream out = openResultFile(*keywords_, outputDirectory_, step);
  out << text;
  std::cout << text << std::flush;
}

void RunSequence::homogenize(int step) {
  const KeyWordsLattora& kw = *keywords_;
  if (!kw.writeEffectiveMatrix()) return;
  // The cases solve the increment problem alone, which is the response on top of the step's
  // state only for laws that are affine linear in the strain.
  if (!materials_->allLinearForFormulation(kw, *geometry_))
    stopAtMissingStep("effective matrices of laws that are not affine linear");
  // Without a method no case is solved, and matrices of unsolved cases would be the unit
  // loads' uniform fields: none are written.
  if (!isIterativeMethod(kw.iterativeMethod())) {
    std::cout << "Unknown iterative method " << kw.iterativeMethod()
              << ": the effective matrices are not computed.\n";
    return;
  }
  ElasticityHyperelasticityImage& field = *fields_->deltaE;

  // The cases overwrite the solution field; the step's solution is kept for the next step's
  // start, in E_old where the run has it apart, else in a copy when steps follow.
  timers_.temporaryFiles.start();
  std::unique_ptr<FFTImage> kept;
  if (fields_->E_old != fields_->E)
    *fields_->E_old = *fields_->E;
  else if (step + 1 < kw.numberOfSteps()) {
    kept = std::make_unique<FFTImage>(field.nComponents, field.nFirst, field.nSecond, field.nThird,
                                      "E_kept");
    *kept = field;
  }
  FFTImage stress(field.nComponents, field.nFirst, field.nSecond, field.nThird, "Stress");
  timers_.temporaryFiles.stop();

  LoadCaseResponses responses = loadCaseResponses(step);
  const unsigned mask = kw.loadCaseMask();
  std::array<LoadCaseRecord, 7> records;
  const int parts = progressPartsPerStep();
  int part = step * parts;  // the step's own solve
  for (int c = 0; c <= kThermalLoadCase; ++c) {
    if (!kw.hasLoadCase(c)) continue;
    ++part;
    if (responses.finished(c)) {
      records[c] = responses.read(c);
      continue;
    }
    std::printf("\n\nLoadcase = %d\n\n", c + 1);
    std::fflush(stdout);
    timers_.solver.start();
    const NeumannResult result =
        solver_->solveLoadCase(step, c, *fields_, reference_->lambda, reference_->mu, counters_,
                               part, kw.numberOfSteps() * parts);
    timers_.solver.stop();
    iterations_ += result.iterations;
    resetGraph();
    timers_.temporaryFiles.start();
    field.computeStress(stress, solver_->loadCaseContext(c, reference_->lambda, reference_->mu));
    // The thermal case takes no part in the energy products.
    const unsigned earlier = c < kThermalLoadCase ? mask & ((1u << c) - 1u) : 0u;
    records[c] = responses.record(c, earlier, field, stress);
    timers_.temporaryFiles.stop();
    // The cases of a single loaded step write their fields too, under the case's suffix.
    if (kw.writeVtkOutput() && kw.numberOfSteps() == 1 && !kw.isZeroLoad())
      writeFields(insertBeforeExtension(fieldFileName(step), loadCaseSuffix(c)), field, stress);
    responses.markFinished(c);
  }

  timers_.temporaryFiles.start();
  if (fields_->E_old != fields_->E)
    *fields_->E = *fields_->E_old;
  else if (kept)
    static_cast<FFTImage&>(field) = *kept;
  timers_.temporaryFiles.stop();

  timers_.homogenization.start();
  writeEffectiveMatrices(step, records);
  timers_.homogenization.stop();
}

void RunSequence::writeEffectiveMatrices(int step, const std::array<LoadCaseRecord, 7>& records) {
  const KeyWordsLattora& kw = *keywords_;
  const ElasticityHyperelasticityImage& field = *fields_->deltaE;
  const std::string principle = kw.equivalencePrinciple();
  const bool energy = principle == "Energy" || principle == "EnergyAndStrain";
  const bool strain = principle == "Strain" || principle == "EnergyAndStrain";
  if (!energy && !strain)
    fatal("Unknown equivalence principle " + principle +
          " (Energy, Strain or EnergyAndStrain expected).");
  const unsigned mask = kw.loadCaseMask();
  const bool allSix = kw.numberOfMechanicalLoadCases() == 6;
  const bool stressCases = loadCasesPrescribeStress(kw);
  const double increment = kw.macroscopicLoadCaseIncrement();
  std::ostringstream text = resultText(kw);

  // The stiffness of the first principle written converts the thermal tensors.
  EffectiveMatrix stiffness;
  bool haveStiffness = false;
  auto writeMatrices = [&](EffectiveMatrix measured, const std::string& suffix) {
    // Stress cases measure the compliance; the strain field names the stiffness first, so it
    // is the inverse (the material checks ensure all six cases ran then).
    if (stressCases) invertOrStop(measured, "measured effective compliance");
    measured.writeRows(text, "Matrix:" + field.getStiffnessName() + ":" + suffix, mask, mask);
    if (allSix) {
      EffectiveMatrix inverse = measured;
      invertOrStop(inverse, "effective stiffness");
      inverse.writeRows(text, "Matrix:" + field.getComplianceName() + ":" + suffix);
      if (!haveStiffness) stiffness = measured;
      haveStiffness = true;
    }
  };
  if (mask != 0) {
    if (energy) writeMatrices(measuredByEnergy(records, mask, increment), "Energy");
    if (strain) writeMatrices(measuredByStrain(records, mask, increment, stressCases), "Strain");
  }

  if (kw.hasLoadCase(kThermalLoadCase)) {
    const double dT = kw.macroscopicTemperatureChangeIncrement();
    const LoadCaseRecord& thermal = records[kThermalLoadCase];
    const std::string stressKey = "Matrix:" + field.getThermalStressName();
    const std::string expansionKey = "Matrix:" + field.getThermalExpansionName();
    // Per unit temperature change: the mean stress at zero mean strain, or the mean strain at
    // zero mean stress; the other tensor follows from the effective stiffness.
    if (stressCases) {
      const std::array<double, 6> expansion = scaled(thermal.meanStrain, 1.0 / dT);
      writeMatrixRows(text, expansionKey, tensorOfVoigt(expansion, true), 3);
      if (haveStiffness)
        writeMatrixRows(text, stressKey, tensorOfVoigt(scaled(product(stiffness, expansion), -1.0), false), 3);
    } else {
      const std::array<double, 6> thermalStress = scaled(thermal.meanStress, 1.0 / dT);
      writeMatrixRows(text, stressKey, tensorOfVoigt(thermalStress, false), 3);
      if (haveStiffness) {
        EffectiveMatrix compliance = stiffness;
        invertOrStop(compliance, "effective stiffness");
        writeMatrixRows(text, expansionKey,
                        tensorOfVoigt(scaled(product(compliance, thermalStress), -1.0), true), 3);
      }
    }
  }
  writeResultText(step, text.str());
}

void RunSequence::writeBounds(int step) {
  const KeyWordsLattora& kw = *keywords_;
  if (!kw.computeVoigtReussBounds()) return;
  timers_.bounds.start();
  std::ostringstream text = resultText(kw);
  // A rigid phase has no finite stiffness and a soft one no finite compliance: the mean of
  // the undefined matrix is not formed, and its finite counterpart is written as zeros.
  if (kw.useVoigt()) {
    if (materials_->anyRigid(*geometry_)) {
      zeroRows(text, "Matrix:Compliance:Voigt");
    } else {
      EffectiveMatrix voigt = computeVoigtBound(*materials_, *geometry_);
      voigt.writeRows(text, "Matrix:Stiffness:Voigt");
      invertOrStop(voigt, "Voigt bound of the stiffness");
      voigt.writeRows(text, "Matrix:Compliance:Voigt");
    }
  }
  if (kw.useReuss()) {
    if (materials_->anySoft(*geometry_)) {
      zeroRows(text, "Matrix:Stiffness:Reuss");
    } else {
      EffectiveMatrix reuss = computeReussBound(*materials_, *geometry_);
      reuss.writeRows(text, "Matrix:Compliance:Reuss");
      invertOrStop(reuss, "Reuss bound of the compliance");
      reuss.writeRows(text, "Matrix:Stiffness:Reuss");
    }
  }
  writeResultText(step, text.str());
  timers_.bounds.stop();
}

// The markers and responses of a step's load cases live until the step is complete on disk.
void RunSequence::finishLoadCases(int step) {
  if (keywords_->writeEffectiveMatrix()) loadCaseResponses(step).removeAll();
}

}  // namespace gridmoor
