// Explicit instantiations of the element types in use, so that every member of each
// compiles here once rather than surfacing in whichever caller first needs it.
#include "voxel/Vector.h"

#include <complex>

namespace gridmoor {

template class Vector<char>;
template class Vector<unsigned char>;
template class Vector<double>;
template class Vector<unsigned long long>;
template class Vector<std::complex<char>>;
template class Vector<std::complex<unsigned char>>;
template class Vector<std::complex<double>>;
template class Vector<std::complex<unsigned long long>>;

}  // namespace gridmoor
