// The holder of one listed material: the mechanical law, the heat law and a spare law slot,
// all owned and deleted with the holder.
#pragma once

#include "materials/DiscretizedElasticMaterial.h"
#include "materials/DiscretizedHeatMaterial.h"

namespace gridmoor {

class Material {
 public:
  // Null in a heat run.
  DiscretizedElasticMaterial* elastic = nullptr;
  // Null in a mechanical run.
  DiscretizedHeatMaterial* heat = nullptr;
  // A further mechanical law slot; the factories leave it null.
  DiscretizedElasticMaterial* secondary = nullptr;

  Material() = default;
  Material(DiscretizedElasticMaterial* elastic, DiscretizedHeatMaterial* heat)
      : elastic(elastic), heat(heat) {}
  Material(const Material&) = delete;
  Material& operator=(const Material&) = delete;
  virtual ~Material() {
    delete elastic;
    delete heat;
    delete secondary;
  }
};

}  // namespace gridmoor
