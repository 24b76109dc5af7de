#include "materials/Formulations.h"

#include "common/Fatal.h"

namespace gridmoor {

Formulation formulationOf(const std::string& word) {
  for (std::size_t i = 0; i < formulationWords.size(); ++i)
    if (word == formulationWords[i]) return static_cast<Formulation>(i);
  fatal("Unknown problem formulation " + word);
}

}  // namespace gridmoor
