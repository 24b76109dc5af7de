// File names the run builds from the parameter file's names: directory joins, step and
// load-case suffixes, and the markers of finished homogenization load cases.
#pragma once

#include <string>

namespace gridmoor {

class KeywordsElasticity;

// name inside directory, unless name is absolute ("/...", "\\...", "C:..."). Accepts both
// separators; a directory without a trailing separator gets "/".
std::string joinPath(const std::string& directory, const std::string& name);

// text goes before the extension of the last path element; a name without one gets it at the
// end. A dot that starts the element (".result") is no extension.
std::string insertBeforeExtension(const std::string& path, const std::string& text);

// The extension of the last path element without its dot ("gmr" of "run.d/state.gmr"); empty
// when the element has none.
std::string extensionOf(const std::string& path);

// The file name of step (zero-based) for any per-step output: path itself for a single step,
// else with "_" and the one-based step number before the extension ("result_3.txt").
std::string stepFileName(const KeywordsElasticity& keywords, const std::string& path, int step);

// The homogenization load cases 0 to 5 are the unit loads in Voigt order, 6 the thermal one.
// Each adds its own suffix to the names of files it writes: "_XX", ..., "_XY", "_Thermal".
const std::string& loadCaseSuffix(int loadCase);

// The solution field file of the run (SolutionVtkFileName, "solution.vti" when empty) in the
// output directory, without step number.
std::string solutionFileName(const KeywordsElasticity& keywords, const std::string& directory);

// The empty marker that says load case loadCase of step `step` (zero-based) finished: the
// name of the step's solution file (stepFileName) without extension, the case suffix,
// ".finished". The solution file's name, not the restart file's, is the base, so that a run
// that stores no restart state still has markers; its step number ties them to their step.
std::string finishedFileName(const KeywordsElasticity& keywords, const std::string& directory,
                             int step, int loadCase);

// The temporary binary file in which a finished load case of a step keeps its response until
// the step's matrices are formed: like the marker, ending in ".response".
std::string loadCaseResponseFileName(const KeywordsElasticity& keywords,
                                     const std::string& directory, int step, int loadCase);

}  // namespace gridmoor
