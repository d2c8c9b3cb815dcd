// Encoding through OpenJPEG.
#include "media/codecs/jpeg2000_encode.h"

#include <algorithm>
#include <memory>

#include <openjpeg.h>

namespace media {
namespace {

struct Target {
  const PutBytes& put;
  uint64_t position = 0;
  bool failed = false;
};
OPJ_SIZE_T WriteTarget(void* bytes, OPJ_SIZE_T count, void* user) {
  auto& target = *static_cast<Target*>(user);
  if (!target.put(target.position, static_cast<const uint8_t*>(bytes), count)) {
    target.failed = true;
    return static_cast<OPJ_SIZE_T>(-1);
  }
  target.position += count;
  return count;
}
OPJ_OFF_T SkipTarget(OPJ_OFF_T count, void* user) {
  static_cast<Target*>(user)->position += static_cast<uint64_t>(count);
  return count;
}
OPJ_BOOL SeekTarget(OPJ_OFF_T position, void* user) {
  static_cast<Target*>(user)->position = static_cast<uint64_t>(position);
  return OPJ_TRUE;
}

void Drop(const char*, void*) {}

opj_cparameters_t ParametersOf(const Jpeg2000Plan& plan) {
  opj_cparameters_t parameters;
  opj_set_default_encoder_parameters(&parameters);
  parameters.cod_format = 0;
  parameters.tile_size_on = OPJ_TRUE;
  parameters.cp_tdx = static_cast<int>(plan.tileWidth);
  parameters.cp_tdy = static_cast<int>(plan.tileHeight);
  parameters.irreversible = plan.isLossless ? 0 : 1;
  parameters.tcp_mct = plan.isColour && plan.components == 3 ? 1 : 0;
  parameters.prog_order = OPJ_LRCP;
  parameters.numresolution = static_cast<int>(LevelsOf(plan)) + 1;
  parameters.cp_disto_alloc = 1;
  parameters.tcp_numlayers = 0;
  for (const double rate : plan.layers)
    parameters.tcp_rates[parameters.tcp_numlayers++] = static_cast<float>(plan.precision / rate);
  if (plan.isLossless) parameters.tcp_rates[parameters.tcp_numlayers++] = 0;
  return parameters;
}

using CodecPtr = std::unique_ptr<opj_codec_t, decltype(&opj_destroy_codec)>;
using ImagePtr = std::unique_ptr<opj_image_t, decltype(&opj_image_destroy)>;
using StreamPtr = std::unique_ptr<opj_stream_t, decltype(&opj_stream_destroy)>;

ImagePtr ImageOf(const Jpeg2000Plan& plan) {
  opj_image_cmptparm_t component = {};
  component.dx = component.dy = 1;
  component.w = plan.width;
  component.h = plan.height;
  component.prec = plan.precision;
  component.sgnd = plan.isSigned ? 1 : 0;
  std::vector<opj_image_cmptparm_t> components(plan.components, component);
  opj_image_t* image = opj_image_tile_create(plan.components, components.data(),
                                             plan.isColour ? OPJ_CLRSPC_SRGB : OPJ_CLRSPC_GRAY);
  if (image != nullptr) {
    image->x1 = plan.width;
    image->y1 = plan.height;
  }
  return {image, &opj_image_destroy};
}

}  // namespace

uint32_t LevelsOf(const Jpeg2000Plan& plan) {
  const uint32_t side = std::min({plan.width, plan.height, plan.tileWidth, plan.tileHeight});
  uint32_t levels = 0;
  while (levels < plan.levels && side >> (levels + 1) != 0) ++levels;
  return levels;
}

Outcome EncodeJpeg2000(const Jpeg2000Plan& plan, const GiveTile& give, const PutBytes& put) {
  opj_cparameters_t parameters = ParametersOf(plan);
  const CodecPtr codec(opj_create_compress(OPJ_CODEC_J2K), &opj_destroy_codec);
  const ImagePtr image = ImageOf(plan);
  const StreamPtr stream(opj_stream_default_create(OPJ_FALSE), &opj_stream_destroy);
  if (codec == nullptr || image == nullptr || stream == nullptr) return Outcome::NoMemory;
  Target target = {put};
  opj_set_error_handler(codec.get(), Drop, nullptr);
  opj_set_warning_handler(codec.get(), Drop, nullptr);
  opj_stream_set_user_data(stream.get(), &target, nullptr);
  opj_stream_set_write_function(stream.get(), WriteTarget);
  opj_stream_set_skip_function(stream.get(), SkipTarget);
  opj_stream_set_seek_function(stream.get(), SeekTarget);
  const auto failed = [&] { return target.failed ? Outcome::NotTaken : Outcome::BadData; };
  const char* const options[] = {"PLT=YES", nullptr};
  if (opj_setup_encoder(codec.get(), &parameters, image.get()) != OPJ_TRUE ||
      opj_encoder_set_extra_options(codec.get(), options) != OPJ_TRUE ||
      opj_start_compress(codec.get(), image.get(), stream.get()) != OPJ_TRUE)
    return failed();
  std::vector<uint8_t> samples;
  uint32_t number = 0;
  for (uint32_t top = 0; top < plan.height; top += plan.tileHeight) {
    for (uint32_t left = 0; left < plan.width; left += plan.tileWidth) {
      give({left, top, std::min(plan.tileWidth, plan.width - left),
            std::min(plan.tileHeight, plan.height - top)},
           samples);
      if (opj_write_tile(codec.get(), number++, samples.data(), static_cast<OPJ_UINT32>(samples.size()),
                         stream.get()) != OPJ_TRUE)
        return failed();
    }
  }
  return opj_end_compress(codec.get(), stream.get()) == OPJ_TRUE && !target.failed ? Outcome::Ok
                                                                                   : failed();
}

}  // namespace media
