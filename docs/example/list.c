/* Opens a NITF file and lists its segments. Usage: list FILE */
#include <stdio.h>
#include <string.h>

#include <orbntf/orbntf.h>

int main(int count, char** words) {
  NitfHandle document = NULL;
  uint32_t i;
  int32_t status = count == 2 ? Orb_NITFCreateA(&document, words[1]) : ORB_INVALID_PARAMETER;
  if (status != ORB_SUCCESS) {
    fprintf(stderr, "list: status %d\n", (int)status);
    return 1;
  }
  for (i = 0; i < Orb_NITFGetImageHeaderCount(document); ++i) {
    ImageHeader image;
    memset(&image, 0, sizeof image); /* Free releases every pointer that is not null */
    if (Orb_NITFGetImageHeader(document, i, &image) == ORB_SUCCESS)
      printf("image %u: %s %s, %d x %d\n", (unsigned)i, image.IID1, image.IC, (int)image.NCOLS, (int)image.NROWS);
    Orb_NITFFreeImageHeader(&image);
  }
  printf("%u graphics, %u texts\n", (unsigned)Orb_NITFGetGraphicHeaderCount(document),
         (unsigned)Orb_NITFGetTextHeaderCount(document));
  Orb_NITFDestroy(&document);
  return 0;
}
