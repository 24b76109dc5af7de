// The run's stopwatches, one per row of the run report's timing table.
#pragma once

#include "common/Timer.h"

namespace gridmoor {

struct RunTimers {
  Timer total;
  Timer input;
  Timer materials;
  Timer ldt;
  Timer lof;
  Timer eigenstrain;
  Timer thermal;
  Timer allocation;
  Timer referenceMaterial;
  Timer internalVariables;
  Timer externalForce;
  Timer solver;
  Timer outputVtk;
  Timer outputDas;
  Timer deformation;
  Timer temporaryFiles;
  Timer homogenization;
  Timer averagingInternalVariables;
  Timer minMaxInternalVariables;
  Timer averagingStrainStress;
  Timer bounds;
};

}  // namespace gridmoor
