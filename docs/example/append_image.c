/* Makes a NITF file of raw pixels, or adds them to one. Usage: append_image [IN] OUT */
#include <stdio.h>

#include <orbntf/host.h>
#include <orbntf/orbntf.h>

static int Fail(const char* what, int32_t status) {
  fprintf(stderr, "append_image: %s: status %d\n", what, (int)status);
  return 1;
}

int main(int count, char** words) {
  enum { kWidth = 64, kHeight = 48 };
  uint8_t pixels[kWidth * kHeight * 3]; /* blue, green, red; rows of a multiple of 4 bytes */
  KernelBitmap bitmap;
  NitfHandle document = NULL;
  int32_t status;
  int i;
  if (count != 2 && count != 3) return Fail("usage: append_image [IN] OUT", ORB_INVALID_PARAMETER);
  for (i = 0; i < kWidth * kHeight; ++i) {
    pixels[3 * i] = (uint8_t)(4 * (i % kWidth));
    pixels[3 * i + 1] = (uint8_t)(5 * (i / kWidth));
    pixels[3 * i + 2] = 200;
  }
  status = count == 3 ? Orb_NITFCreateA(&document, words[1]) : Orb_NITFCreate(&document, NULL);
  if (status != ORB_SUCCESS) return Fail("open", status);
  status = KernelAllocateBitmap(&bitmap, ORB_BITMAP_RECORD_SIZE, 1, kWidth, kHeight, 24, ORB_ORDER_BGR, NULL,
                                ORB_VIEW_TOP_LEFT, pixels, sizeof pixels);
  if (status == ORB_SUCCESS) {
    status = Orb_NITFAppendImageSegment(document, &bitmap, ORB_FORMAT_JPEG_RGB, 24, 20);
    KernelFreeBitmap(&bitmap);
  }
  if (status == ORB_SUCCESS) status = Orb_NITFSaveFileA(document, words[count - 1]);
  Orb_NITFDestroy(&document);
  return status == ORB_SUCCESS ? 0 : Fail("append", status);
}
