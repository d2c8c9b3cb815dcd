// The functions of PROJ, which is loaded when they are first asked for.
#pragma once

#include <proj.h>
#include <proj_experimental.h>

namespace core {

struct ProjLibrary {
  decltype(&::proj_as_wkt) as_wkt;
  decltype(&::proj_context_create) context_create;
  decltype(&::proj_context_destroy) context_destroy;
  decltype(&::proj_context_set_enable_network) context_set_enable_network;
  decltype(&::proj_coordoperation_get_accuracy) coordoperation_get_accuracy;
  decltype(&::proj_create) create;
  decltype(&::proj_create_cartesian_2D_cs) create_cartesian_2D_cs;
  decltype(&::proj_create_crs_to_crs_from_pj) create_crs_to_crs_from_pj;
  decltype(&::proj_create_projected_crs) create_projected_crs;
  decltype(&::proj_crs_get_coordoperation) crs_get_coordoperation;
  decltype(&::proj_destroy) destroy;
  decltype(&::proj_log_level) log_level;
  decltype(&::proj_normalize_for_visualization) normalize_for_visualization;
  decltype(&::proj_trans) trans;
  decltype(&::proj_trans_get_last_used_operation) trans_get_last_used_operation;

  /// Null where PROJ cannot be loaded.
  static const ProjLibrary* Get();
};

}  // namespace core
