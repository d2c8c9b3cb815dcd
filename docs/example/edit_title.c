/* Opens a NITF file as a document, prints its headers, changes its title and saves it.
 * Usage: edit_title IN OUT TITLE */
#include <stdio.h>
#include <string.h>

#include "orbntf/orbntf.h"

static int Fail(const char* what, int32_t status) {
  fprintf(stderr, "%s: status %d\n", what, (int)status);
  return 1;
}

static void PrintSegments(NitfHandle document) {
  uint32_t i;
  for (i = 0; i < Orb_NITFGetImageHeaderCount(document); ++i) {
    ImageHeader image;
    memset(&image, 0, sizeof image); /* Free releases every pointer that is not null */
    if (Orb_NITFGetImageHeader(document, i, &image) == ORB_SUCCESS) {
      printf("image %u: %s %s, %d x %d\n", (unsigned)i, image.IID1, image.IC, (int)image.NCOLS,
             (int)image.NROWS);
    }
    Orb_NITFFreeImageHeader(&image);
  }
  for (i = 0; i < Orb_NITFGetTextHeaderCount(document); ++i) {
    TextHeader text;
    memset(&text, 0, sizeof text);
    if (Orb_NITFGetTextHeader(document, i, &text) == ORB_SUCCESS) printf("text %u: %s\n", (unsigned)i, text.TXTITL);
    Orb_NITFFreeTextHeader(&text);
  }
}

static int32_t ChangeTitle(NitfHandle document, char* title) {
  NITFHeader header;
  char* old;
  int32_t status;
  memset(&header, 0, sizeof header);
  status = Orb_NITFGetNITFHeader(document, &header);
  if (status == ORB_SUCCESS) {
    printf("title: %s\n", header.FTITLE);
    old = header.FTITLE;
    header.FTITLE = title; /* Set only reads the record */
    header.FBKGC = 0xFFFFFF; /* Get leaves the background alone, Set stores it */
    status = Orb_NITFSetNITFHeader(document, &header);
    header.FTITLE = old;
  }
  Orb_NITFFreeNITFHeader(&header);
  return status;
}

int main(int argc, char** argv) {
  NitfHandle document = NULL;
  int32_t status;
  if (argc != 4) return Fail("usage: edit_title IN OUT TITLE", 0);
  status = Orb_NITFCreateA(&document, argv[1]);
  if (status != ORB_SUCCESS) return Fail(argv[1], status);
  PrintSegments(document);
  status = ChangeTitle(document, argv[3]);
  if (status == ORB_SUCCESS) status = Orb_NITFSaveFileA(document, argv[2]);
  Orb_NITFDestroy(&document);
  return status == ORB_SUCCESS ? 0 : Fail(argv[2], status);
}
