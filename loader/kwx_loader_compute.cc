#include "compute/compute_defaults.h"
#include "loader/kwx_loader.h"

namespace kwx {

void kwxLoader::ComputeDefaults(Company& objCompany) {
  // The compute and value objects are created per call from the stored platform; the loader
  // holds neither.
  ::kwx::ComputeDefaults(objCompany, platform_);
}

}  // namespace kwx
