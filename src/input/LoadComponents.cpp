#include "input/LoadComponents.h"

#include <array>
#include <string_view>

#include "common/Fatal.h"

namespace gridmoor {

namespace {

// Tensor slots 3 * row + column of the Voigt slots, the diagonal twin first.
constexpr std::array<std::array<int, 2>, 6> kTensorSlotsOfVoigt = {
    {{0, 0}, {4, 4}, {8, 8}, {5, 7}, {2, 6}, {1, 3}}};

template <std::size_t N>
int slotOf(const std::array<std::string_view, N>& words, const std::string& word) {
  for (std::size_t i = 0; i < N; ++i) {
    if (words[i] == word) return static_cast<int>(i);
  }
  // The numeric form: exactly one digit from 1 to N, so that "01" or "1.0" are no slot.
  if (word.size() == 1 && word[0] >= '1' && word[0] < static_cast<char>('1' + N)) {
    return word[0] - '1';
  }
  return -1;
}

template <typename SlotOf>
unsigned maskOf(const WordList& words, const std::string& key, SlotOf slotOfWord) {
  unsigned mask = 0;
  for (const std::string& word : words) {
    const int slot = slotOfWord(word);
    if (slot < 0) fatal(key + ": \"" + word + "\" names no load component");
    mask |= 1u << slot;
  }
  return mask;
}

}  // namespace

int componentCount(LoadKind kind) {
  switch (kind) {
    case LoadKind::DeformationGradient:
    case LoadKind::FirstPK:
    case LoadKind::DeformationGradientFirstPK:
      return 9;
    default:
      return 6;
  }
}

std::string loadKindName(LoadKind kind) {
  switch (kind) {
    case LoadKind::Strain: return "Strain";
    case LoadKind::Stress: return "Stress";
    case LoadKind::StrainStress: return "StrainStress";
    case LoadKind::Polarization: return "Polarization";
    case LoadKind::Eigenstrain: return "Eigenstrain";
    case LoadKind::DeformationGradient: return "DeformationGradient";
    case LoadKind::FirstPK: return "FirstPK";
    case LoadKind::DeformationGradientFirstPK: return "DeformationGradientFirstPK";
  }
  return "unset";
}

int voigtSlotOfWord(const std::string& word) { return slotOf(kVoigtWords, word); }

int tensorSlotOfWord(const std::string& word) { return slotOf(kTensorWords, word); }

unsigned voigtMaskOf(const WordList& words, const std::string& key) {
  return maskOf(words, key, voigtSlotOfWord);
}

unsigned tensorMaskOf(const WordList& words, const std::string& key) {
  return maskOf(words, key, tensorSlotOfWord);
}

unsigned tensorMaskOfVoigtMask(unsigned voigtMask) {
  unsigned mask = 0;
  for (std::size_t slot = 0; slot < kTensorSlotsOfVoigt.size(); ++slot) {
    if (voigtMask & (1u << slot)) {
      mask |= 1u << kTensorSlotsOfVoigt[slot][0];
      mask |= 1u << kTensorSlotsOfVoigt[slot][1];
    }
  }
  return mask;
}

}  // namespace gridmoor
