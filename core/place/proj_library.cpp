#include "core/place/proj_library.h"

#include "media/library.h"

namespace core {

const ProjLibrary* ProjLibrary::Get() {
  static ProjLibrary functions{};
  static const bool isThere = [] {
    void* library = media::LoadLibrary(PROJ_SONAME);
    return media::Resolve(library, "proj_as_wkt", functions.as_wkt) &&
           media::Resolve(library, "proj_context_create", functions.context_create) &&
           media::Resolve(library, "proj_context_destroy", functions.context_destroy) &&
           media::Resolve(library, "proj_context_set_enable_network",
                          functions.context_set_enable_network) &&
           media::Resolve(library, "proj_coordoperation_get_accuracy",
                          functions.coordoperation_get_accuracy) &&
           media::Resolve(library, "proj_create", functions.create) &&
           media::Resolve(library, "proj_create_cartesian_2D_cs", functions.create_cartesian_2D_cs) &&
           media::Resolve(library, "proj_create_crs_to_crs_from_pj",
                          functions.create_crs_to_crs_from_pj) &&
           media::Resolve(library, "proj_create_projected_crs", functions.create_projected_crs) &&
           media::Resolve(library, "proj_crs_get_coordoperation", functions.crs_get_coordoperation) &&
           media::Resolve(library, "proj_destroy", functions.destroy) &&
           media::Resolve(library, "proj_log_level", functions.log_level) &&
           media::Resolve(library, "proj_normalize_for_visualization",
                          functions.normalize_for_visualization) &&
           media::Resolve(library, "proj_trans", functions.trans) &&
           media::Resolve(library, "proj_trans_get_last_used_operation",
                          functions.trans_get_last_used_operation);
  }();
  return isThere ? &functions : nullptr;
}

}  // namespace core
