// Explicit instantiations of the two image element types: colours and real fields.
#include "voxel/Image.h"

namespace gridmoor {

template class Image<unsigned char>;
template class Image<double>;

}  // namespace gridmoor
