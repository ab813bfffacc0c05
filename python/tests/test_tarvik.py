"""The Python module against the bundled samples: rendering, bytes input,
errors, signatures, the numpy view and threads."""

import gc
import os
import tempfile

import pytest

import tarvik

SOURCE = os.environ.get("TARVIK_SOURCE_DIR", os.path.join(os.path.dirname(__file__), "..", ".."))
SIGNED = os.path.join(SOURCE, "testdata", "signed_v4_png.ofd")


def sample(name):
    with open(os.path.join(SOURCE, "testdata", name), "rb") as f:
        return f.read()


@pytest.fixture(scope="module")
def doc():
    with tarvik.open(SIGNED, verify=False) as d:
        yield d


def test_render_outputs(doc):
    assert (len(doc), doc.page_size(0), doc.pixel_size(0, 150)) == (1, (210, 297), (1240, 1753))
    img = doc.render(0, dpi=50)
    assert (img.width, img.height, len(bytes(img))) == (413, 584, 413 * 584 * 4)
    assert img.pixel(0, 0) == (255, 255, 255, 255)
    assert [(s.drawn, s.signature) for s in img.seals] == [(True, 0)]
    # PNG bytes, from the page and from the picture, decode to the same pixels.
    png = doc.render_png(0, dpi=50)
    assert png == img.to_png()
    assert bytes(tarvik.decode_seal(png)) == bytes(img)
    with tempfile.TemporaryDirectory() as tmp:
        img.save(os.path.join(tmp, "p.png"))
        with open(os.path.join(tmp, "p.png"), "rb") as f:
            assert f.read() == png
    with tarvik.open(data=sample("signed_v4_png.ofd"), verify=False) as d:
        assert d.name == "<memory>" and bytes(d.render(0, dpi=50)) == bytes(img)
    # Options reach the renderer.
    assert bytes(doc.render(0, dpi=50, seals=False)) != bytes(img)
    assert bytes(doc.render(0, dpi=50, color="black")) != bytes(img)


def test_signatures(doc):
    [s] = doc.signatures
    assert s.usable and s.ses_version == 4 and s.seal_name
    assert s.page == 0 and s.stamps[0].page == 0
    left, top, right, bottom = s.boundary
    assert left < right and top < bottom
    assert s.verdict == tarvik.Verdict.NOT_CHECKED and str(s.verdict) == "not checked"
    # With verification on, a verdict and its checks come through.
    with tarvik.open(SIGNED) as d:
        v = d.signatures[0]
        assert isinstance(v.verdict, tarvik.Verdict)
        assert all(c.outcome in ("passed", "failed", "not checked") for c in v.checks)


@pytest.mark.parametrize("call, error", [
    (lambda d: tarvik.open("/nonexistent/invoice.ofd"), tarvik.IoError),
    (lambda d: tarvik.open(data=b"PK\3\4 not a zip"), tarvik.NotOfd),
    (lambda d: tarvik.open(), tarvik.BadArgument),
    (lambda d: tarvik.open(SIGNED, document=3), tarvik.BadDocument),
    (lambda d: tarvik.decode_seal(b"not a seal"), tarvik.BadSeal),
    (lambda d: d.render(1), tarvik.PageOutOfRange),
    (lambda d: d.page_size(5), IndexError),
    (lambda d: d.render(0, dpi=1e6), tarvik.TooLarge),
    (lambda d: d.render(0, color="purple"), ValueError),
    (lambda d: d.render_png(0, color=7), tarvik.BadArgument),
])
def test_errors(doc, call, error):
    with pytest.raises(error) as e:
        call(doc)
    if issubclass(error, tarvik.Error):
        assert e.value.reason and e.value.status == error.status


def test_closed_document_refuses_calls():
    d = tarvik.open(SIGNED, verify=False)
    d.close()
    d.close()
    with pytest.raises(tarvik.BadArgument, match="closed"):
        d.render(0)


def test_numpy_view_shares_the_pixels(doc):
    numpy = pytest.importorskip("numpy")
    img = doc.render(0, dpi=30)
    arr = numpy.asarray(img)
    assert arr.shape == (img.height, img.width, 4) and arr.dtype == numpy.uint8
    assert arr.tobytes() == bytes(img)
    arr[0, 0] = (1, 2, 3, 4)  # a view: the image sees the write
    assert img.pixel(0, 0) == (1, 2, 3, 4)
    # Views outlive the image object.
    expected, view = bytes(img), img.buffer
    del img
    gc.collect()
    assert view.tobytes() == expected and arr.tobytes() == expected


def test_decode_seal_kinds():
    img = tarvik.decode_seal(sample("sample_seal.ofd"), dpi=150)
    assert (img.kind, img.width) == (tarvik.SealKind.OFD, 236)
    png = tarvik.decode_seal(sample("sample_seal.png"))
    assert png.kind == tarvik.SealKind.RASTER and len(bytes(png)) == png.width * png.height * 4
