/* Opens a NITF file as a document, prints its headers, changes its title and saves it.
 * Usage: edit_title IN OUT TITLE */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <orbntf/orbntf.h>

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

/* A decimal number of `width` characters of the file; the position moves behind it. */
static long TakeNumber(FILE* file, size_t width) {
  char digits[16] = "";
  return fread(digits, 1, width, file) == width ? atol(digits) : 0;
}

/* Fills what Orb_NITFGetNITFHeader leaves alone from the file's own header, so that Set keeps it: the
 * background and the lengths of the extended data. Null UDHD and XHD keep the data itself. The fields of the
 * header stand in the order of MIL-STD-2500C, table A-1. */
static int FillSetOnlyFields(const char* path, NITFHeader* header) {
  static const long kListed[] = {16, 10, 0, 9, 13, 11}; /* bytes of a segment's lengths; NUMX has none */
  const long kBackground = 297, kCounts = 360;
  unsigned char rgb[3];
  size_t i;
  FILE* file = fopen(path, "rb");
  if (file == NULL) return 0;
  if (fseek(file, kBackground, SEEK_SET) != 0 || fread(rgb, 1, sizeof rgb, file) != sizeof rgb) {
    fclose(file);
    return 0;
  }
  header->FBKGC = rgb[0] | (uint32_t)rgb[1] << 8 | (uint32_t)rgb[2] << 16;
  fseek(file, kCounts, SEEK_SET);
  for (i = 0; i < sizeof kListed / sizeof kListed[0]; ++i) {
    const long count = TakeNumber(file, 3);
    if (i == 4) header->NUMDES = (uint32_t)count;
    if (i == 5) header->NUMRES = (uint32_t)count;
    fseek(file, count * kListed[i], SEEK_CUR);
  }
  header->UDHDL = (int32_t)TakeNumber(file, 5);
  if (header->UDHDL != 0) {
    header->UDHOFL = (int32_t)TakeNumber(file, 3);
    fseek(file, header->UDHDL - 3, SEEK_CUR);
  }
  header->XHDL = (int32_t)TakeNumber(file, 5);
  if (header->XHDL != 0) header->XHDLOFL = (int32_t)TakeNumber(file, 3);
  fclose(file);
  return 1;
}

static int32_t ChangeTitle(NitfHandle document, const char* path, char* title) {
  NITFHeader header;
  char* old;
  int32_t status;
  memset(&header, 0, sizeof header);
  status = Orb_NITFGetNITFHeader(document, &header);
  if (status == ORB_SUCCESS && !FillSetOnlyFields(path, &header)) status = ORB_SHORT_READ;
  if (status == ORB_SUCCESS) {
    printf("title: %s\n", header.FTITLE);
    old = header.FTITLE;
    header.FTITLE = title; /* Set only reads the record */
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
  status = ChangeTitle(document, argv[1], argv[3]);
  if (status == ORB_SUCCESS) status = Orb_NITFSaveFileA(document, argv[2]);
  Orb_NITFDestroy(&document);
  return status == ORB_SUCCESS ? 0 : Fail(argv[2], status);
}
