/* Renders one page of an OFD document, with its seals, into a PNG file,
 * through the C interface, and lists the signatures.
 *   render_page_c FILE.ofd OUT.png [PAGE] [DPI] */
#include <stdio.h>
#include <stdlib.h>

#include <tarvik/tarvik_c.h>

int main(int argc, char** argv) {
  tarvik_document* doc;
  tarvik_render_options options;
  tarvik_signature sig;
  uint8_t* png;
  size_t size;
  int page, count, i;
  FILE* out;

  if (argc < 3) {
    fprintf(stderr, "usage: %s FILE.ofd OUT.png [PAGE] [DPI]\n", argv[0]);
    return 2;
  }
  page = argc > 3 ? atoi(argv[3]) : 1;
  tarvik_render_options_init(&options);
  if (argc > 4) options.dpi = atof(argv[4]);

  if (tarvik_open(argv[1], NULL, &doc) != TARVIK_OK) {
    fprintf(stderr, "%s\n", tarvik_last_error());
    return 1;
  }
  if (tarvik_render_png(doc, page - 1, &options, &png, &size, NULL) != TARVIK_OK) {
    fprintf(stderr, "%s\n", tarvik_last_error());
    tarvik_close(doc);
    return 1;
  }
  out = fopen(argv[2], "wb");
  if (!out || fwrite(png, 1, size, out) != size || fclose(out) != 0) {
    fprintf(stderr, "cannot write %s\n", argv[2]);
    tarvik_free(png);
    tarvik_close(doc);
    return 1;
  }
  tarvik_free(png);

  tarvik_signature_count(doc, &count);
  for (i = 0; i < count; ++i) {
    sig.struct_size = sizeof sig;
    if (tarvik_signature_info(doc, i, &sig) == TARVIK_OK) {
      printf("signature %s: seal \"%s\", %s\n", sig.id, sig.seal_name, tarvik_verdict_name(sig.verdict));
    }
  }
  printf("%s: tarvik %s\n", argv[2], tarvik_version());
  tarvik_close(doc);
  return 0;
}
