// Kinds of macroscopic load and the naming of their components: the words of the key lists,
// their slots in the Voigt vector or the row-major tensor, and the bit masks made from them.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "input/Parameter.h"

namespace gridmoor {

// The load a formulation prescribes. StrainStress is the mixed small-strain load and
// DeformationGradientFirstPK the mixed large-strain one.
enum class LoadKind {
  Strain,
  Stress,
  StrainStress,
  Polarization,
  Eigenstrain,
  DeformationGradient,
  FirstPK,
  DeformationGradientFirstPK
};

// 6 for the small-strain kinds (Voigt order XX, YY, ZZ, YZ, XZ, XY), 9 for the large-strain
// kinds (row-major XX, XY, XZ, YX, YY, YZ, ZX, ZY, ZZ).
int componentCount(LoadKind kind);
// The word of the kind in result files: "Strain", "Stress", "StrainStress", ...
std::string loadKindName(LoadKind kind);

inline constexpr unsigned kAllVoigtBits = 0x3Fu;
// The homogenization load case after the six unit loads: the temperature step.
inline constexpr int kThermalLoadCase = 6;
inline constexpr unsigned kAllTensorBits = 0x1FFu;

// The component words of the Voigt slots and of the row-major tensor slots, in slot order.
inline constexpr std::array<std::string_view, 6> kVoigtWords = {"XX", "YY", "ZZ",
                                                                "YZ", "XZ", "XY"};
inline constexpr std::array<std::string_view, 9> kTensorWords = {"XX", "XY", "XZ", "YX", "YY",
                                                                 "YZ", "ZX", "ZY", "ZZ"};

// Slot of a component in the Voigt vector: the words XX, YY, ZZ, YZ, XZ, XY, or the one-based
// slot number "1" to "6". -1 for anything else.
int voigtSlotOfWord(const std::string& word);
// Slot 3 * row + column of a component of a full tensor: the nine words XX to ZZ, or the
// one-based number "1" to "9". -1 for anything else.
int tensorSlotOfWord(const std::string& word);

// The bits of the listed components. A word that names no component ends the run with a
// line naming the key: silently dropping a misspelt component would change the load.
unsigned voigtMaskOf(const WordList& words, const std::string& key);
unsigned tensorMaskOf(const WordList& words, const std::string& key);

// The tensor mask of a symmetric 6-bit mask: each shear slot sets both of its tensor twins.
unsigned tensorMaskOfVoigtMask(unsigned voigtMask);

}  // namespace gridmoor
