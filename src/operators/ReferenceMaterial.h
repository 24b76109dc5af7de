// Choice of the isotropic reference material of the FFT schemes from the eigenvalue range of
// the used laws, per formulation, Green operator, filter and iterative method.
#pragma once

#include <string>

#include "common/Types.h"
#include "materials/MaterialVector.h"

namespace gridmoor {

class IsotropicLinearElasticMaterial;
class KeywordsElasticity;
template <class T>
class Image;

// The chosen constants: the reference's Lame constants, the bulk modulus reported with them,
// and the stiffness of the hourglass term (zero unless the operator is
// "Hex8RHourGlassControl"). Always stiffness values, whichever formulation chose them.
struct ReferenceMaterialChoice {
  double lambda0 = 0.0;
  double mu0 = 0.0;
  double K0 = 0.0;
  double lambdaHourglass = 0.0;
  double muHourglass = 0.0;
  double KHourglass = 0.0;
};

// What the rules need to know about the used laws. The range is the one the formulation asks
// for: stiffness eigenvalues for "Strain", "Polarization" and "DeformationGradient",
// compliance eigenvalues for "Stress" and "Eigenstrain".
struct ReferenceMaterialFacts {
  EigenvalueRange range;
  bool linearMaterials = true;     // every non-limit law affine linear in the formulation
  bool isotropicMaterials = true;  // every law isotropic
  bool hasSoft = false;
  bool allIncompressible = false;
};

// Asks the table for the formulation's range and the four conditions. An unknown formulation
// word, or a table of limit laws only, ends the run with the table's message.
ReferenceMaterialFacts gatherReferenceMaterialFacts(const std::string& formulation,
                                                    const MaterialElasticVector& materials,
                                                    const Geometry& geometry, int loadCase,
                                                    const Image<Real>* field);

// The rules proper, with their console lines (warnings, "slowCG" restart limits and, with
// "Noisy", the chosen constants). An operator without a rule ends the run.
ReferenceMaterialChoice chooseReferenceMaterial(const std::string& formulation,
                                                const ReferenceMaterialFacts& facts,
                                                const KeywordsElasticity& keywords);

// Puts the Lame constants into the reference law, which rebuilds its tables.
void storeReferenceMaterial(const ReferenceMaterialChoice& choice,
                            IsotropicLinearElasticMaterial& reference);

// Gather, choose and store in one call: what each formulation's image runs at the first step,
// and at every step when the reference is updated.
ReferenceMaterialChoice setupReferenceMaterial(const std::string& formulation,
                                               const KeywordsElasticity& keywords,
                                               const MaterialElasticVector& materials,
                                               const Geometry& geometry, int loadCase,
                                               const Image<Real>* field,
                                               IsotropicLinearElasticMaterial& reference);

// Whether the reference is chosen (again) at the start of the given step (0 is the first).
bool referenceMaterialDue(const KeywordsElasticity& keywords, int step);

// The basic scheme can not cope with rigid inclusions: with the operator "Basic", filter
// "None" or "NonConsistent", no soft but some rigid law, the filter becomes "Periodize" and a
// line says so. Returns whether it switched.
bool switchToVariationalScheme(KeywordsElasticity& keywords,
                               const MaterialElasticVector& materials, const Geometry& geometry);

}  // namespace gridmoor
