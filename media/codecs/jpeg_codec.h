// How libjpeg's errors come back: by a jump into the operation that called it. Nothing with a destructor
// lives between the two.
#pragma once

#include <csetjmp>
#include <cstdio>

#include <jpeglib.h>

namespace media {

struct JpegErrors {
  jpeg_error_mgr manager;
  std::jmp_buf jump;
};
[[noreturn]] inline void ReturnJpegError(j_common_ptr codec) {
  std::longjmp(reinterpret_cast<JpegErrors*>(codec->err)->jump, 1);
}
inline jpeg_error_mgr* Silent(JpegErrors& errors) {
  jpeg_std_error(&errors.manager);
  errors.manager.error_exit = ReturnJpegError;
  errors.manager.output_message = [](j_common_ptr) {};
  errors.manager.emit_message = [](j_common_ptr codec, int level) {
    if (level < 0) ++codec->err->num_warnings;
  };
  return &errors.manager;
}

}  // namespace media
