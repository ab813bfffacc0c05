"""OFD documents rendered with their seals, their signatures listed.

    import tarvik
    doc = tarvik.open("invoice.ofd")        # or tarvik.open(data=b"...")
    img = doc.render(0, dpi=150)            # RGBA, seals drawn
    img.save("page1.png")
    for s in doc.signatures:
        print(s.seal_name, s.page, s.boundary, s.verdict)

A binding over the C interface (libtarvik_c) through ctypes. Every call into
the library releases the GIL, so pages render in parallel from threads.
Failures raise tarvik.Error subclasses carrying the library's reason.
"""

import builtins
import ctypes
import enum
import os
import threading
from collections import namedtuple

from . import _library

__all__ = [
    "open", "decode_seal", "Document", "Image", "Signature", "Stamp", "Check", "SealResult",
    "Verdict", "SealKind", "Error", "BadArgument", "IoError", "NotOfd", "BadDocument",
    "PageOutOfRange", "BadPage", "TooLarge", "OutOfMemory", "BadSeal", "Unsupported",
    "BufferTooSmall", "OutOfRange", "InternalError", "version",
]

# ---------------------------------------------------------------- errors


class Error(Exception):
    """A failure of the library: `status` is its number, `reason` its words."""

    status = None

    def __init__(self, reason, status=None):
        super().__init__(reason)
        self.reason = reason
        if status is not None:
            self.status = status


class BadArgument(Error, ValueError):
    status = 1


class IoError(Error, OSError):
    status = 2

    def __str__(self):
        return self.reason


class NotOfd(Error):
    status = 3


class BadDocument(Error):
    status = 4


class PageOutOfRange(Error, IndexError):
    status = 5


class BadPage(Error):
    status = 6


class TooLarge(Error):
    status = 7


class OutOfMemory(Error, MemoryError):
    status = 8


class BadSeal(Error):
    status = 9


class Unsupported(Error):
    status = 10


class BufferTooSmall(Error):
    status = 100


class OutOfRange(Error, IndexError):
    status = 101


class InternalError(Error):
    status = 102


_ERRORS = {cls.status: cls for cls in (
    BadArgument, IoError, NotOfd, BadDocument, PageOutOfRange, BadPage, TooLarge, OutOfMemory,
    BadSeal, Unsupported, BufferTooSmall, OutOfRange, InternalError)}


class Verdict(enum.IntEnum):
    NOT_CHECKED = 0
    VALID = 1
    INTACT = 2
    INVALID = 3
    UNKNOWN = 4

    def __str__(self):
        return _text(_lib.tarvik_verdict_name(int(self)))


class SealKind(enum.IntEnum):
    UNKNOWN = 0
    RASTER = 1
    OFD = 2
    SEAL_FILE = 3
    SIGNED_VALUE = 4


_COLORS = {"as decoded": 0, "decoded": 0, "grey": 1, "gray": 1, "black": 2}

# ---------------------------------------------------------------- C declarations

_c_doc_p = ctypes.c_void_p
_c_report_p = ctypes.c_void_p
_c_image_p = ctypes.c_void_p
_u8_p = ctypes.POINTER(ctypes.c_uint8)


class _OpenOptions(ctypes.Structure):
    _fields_ = [("struct_size", ctypes.c_size_t), ("document_index", ctypes.c_int),
                ("verify", ctypes.c_int), ("trust_anchors", ctypes.c_char_p)]


class _RenderOptions(ctypes.Structure):
    _fields_ = [("struct_size", ctypes.c_size_t), ("dpi", ctypes.c_double),
                ("background", ctypes.c_uint32), ("seals", ctypes.c_int), ("cross", ctypes.c_int),
                ("cross_invalid", ctypes.c_int), ("color_mode", ctypes.c_int)]


class _SealResult(ctypes.Structure):
    _fields_ = [("struct_size", ctypes.c_size_t), ("signature", ctypes.c_int),
                ("stamp_id", ctypes.c_char_p), ("drawn", ctypes.c_int), ("crossed", ctypes.c_int),
                ("reason", ctypes.c_char_p)]


_S = ctypes.c_char_p
_I = ctypes.c_int


class _Signature(ctypes.Structure):
    _fields_ = [("struct_size", ctypes.c_size_t), ("id", _S), ("type", _S), ("location", _S),
                ("usable", _I), ("problem_count", _I), ("provider", _S), ("signature_method", _S),
                ("signature_date_time", _S), ("check_method", _S), ("reference_count", _I),
                ("seal_location", _S), ("signed_value_location", _S), ("ses_version", _I),
                ("seal_name", _S), ("seal_id", _S), ("valid_start", _S), ("valid_end", _S),
                ("signing_time", _S), ("picture_type", _S), ("picture_format", _S),
                ("picture_width_mm", _I), ("picture_height_mm", _I), ("stamp_count", _I),
                ("verdict", _I), ("verdict_reason", _S), ("signer", _S), ("check_count", _I)]


class _Stamp(ctypes.Structure):
    _D = ctypes.c_double
    _fields_ = [("struct_size", ctypes.c_size_t), ("id", _S), ("page_id", ctypes.c_uint32),
                ("page", _I), ("left", _D), ("top", _D), ("right", _D), ("bottom", _D),
                ("has_clip", _I), ("clip_left", _D), ("clip_top", _D), ("clip_right", _D),
                ("clip_bottom", _D)]


class _Check(ctypes.Structure):
    _fields_ = [("struct_size", ctypes.c_size_t), ("name", _S), ("outcome", _I), ("detail", _S)]


class _SealOptions(ctypes.Structure):
    _fields_ = [("struct_size", ctypes.c_size_t), ("dpi", _I), ("width", _I), ("height", _I),
                ("cross", _I), ("color_mode", _I)]


def _load():
    path = os.environ.get("TARVIK_C_LIBRARY") or _library.path()
    lib = ctypes.CDLL(path)  # CDLL: the GIL is released during every call
    P = ctypes.POINTER
    sigs = {
        "tarvik_version": (ctypes.c_char_p, []),
        "tarvik_api_version": (_I, []),
        "tarvik_last_error": (ctypes.c_char_p, []),
        "tarvik_verdict_name": (ctypes.c_char_p, [_I]),
        "tarvik_free": (None, [ctypes.c_void_p]),
        "tarvik_open": (_I, [ctypes.c_char_p, P(_OpenOptions), P(_c_doc_p)]),
        "tarvik_open_memory": (_I, [ctypes.c_char_p, ctypes.c_size_t, P(_OpenOptions), P(_c_doc_p)]),
        "tarvik_close": (None, [_c_doc_p]),
        "tarvik_page_count": (_I, [_c_doc_p, P(_I)]),
        "tarvik_page_size": (_I, [_c_doc_p, _I, P(ctypes.c_double), P(ctypes.c_double)]),
        "tarvik_pixel_size": (_I, [_c_doc_p, _I, ctypes.c_double, P(_I), P(_I)]),
        "tarvik_render_rgba": (_I, [_c_doc_p, _I, P(_RenderOptions), ctypes.c_void_p, ctypes.c_size_t,
                                    _I, P(_I), P(_I), P(_c_report_p)]),
        "tarvik_render_png": (_I, [_c_doc_p, _I, P(_RenderOptions), P(_u8_p), P(ctypes.c_size_t),
                                   P(_c_report_p)]),
        "tarvik_render_image": (_I, [_c_doc_p, _I, P(_RenderOptions), P(_c_image_p), P(_c_report_p)]),
        "tarvik_image_pixels": (_I, [_c_image_p, P(_u8_p), P(_I), P(_I), P(_I)]),
        "tarvik_image_free": (None, [_c_image_p]),
        "tarvik_encode_png": (_I, [ctypes.c_void_p, _I, _I, _I, P(_u8_p), P(ctypes.c_size_t)]),
        "tarvik_report_seal_count": (_I, [_c_report_p, P(_I)]),
        "tarvik_report_seal": (_I, [_c_report_p, _I, P(_SealResult)]),
        "tarvik_report_warning_count": (_I, [_c_report_p, P(_I)]),
        "tarvik_report_warning": (_I, [_c_report_p, _I, P(ctypes.c_char_p)]),
        "tarvik_report_free": (None, [_c_report_p]),
        "tarvik_signature_count": (_I, [_c_doc_p, P(_I)]),
        "tarvik_signature_info": (_I, [_c_doc_p, _I, P(_Signature)]),
        "tarvik_signature_stamp": (_I, [_c_doc_p, _I, _I, P(_Stamp)]),
        "tarvik_signature_check": (_I, [_c_doc_p, _I, _I, P(_Check)]),
        "tarvik_signature_problem": (_I, [_c_doc_p, _I, _I, P(ctypes.c_char_p)]),
        "tarvik_decode_seal": (_I, [ctypes.c_char_p, ctypes.c_size_t, P(_SealOptions), P(_u8_p), P(_I),
                                    P(_I), P(_I)]),
    }
    for name, (restype, argtypes) in sigs.items():
        fn = getattr(lib, name)
        fn.restype = restype
        fn.argtypes = argtypes
    return lib


_lib = _load()


def _text(value):
    return value.decode("utf-8", "replace") if value is not None else ""


def _check(status):
    if status != 0:
        reason = _text(_lib.tarvik_last_error())
        raise _ERRORS.get(status, Error)(reason, status)


def _sized(cls):
    s = cls()
    s.struct_size = ctypes.sizeof(cls)
    return s


def _take_bytes(pointer, size):
    try:
        return ctypes.string_at(pointer, size.value)
    finally:
        _lib.tarvik_free(pointer)


def version():
    """The library's version, "MAJOR.MINOR.PATCH"."""
    return _text(_lib.tarvik_version())

# ---------------------------------------------------------------- values


SealResult = namedtuple("SealResult", "signature stamp_id drawn crossed reason")
SealResult.__doc__ = "What happened to one seal annotation of a rendered page."
Stamp = namedtuple("Stamp", "id page_id page boundary clip")
Stamp.__doc__ = ("Where a seal appears: page index, boundary (left, top, right, bottom) in page "
                 "millimetres, clip relative to it or None.")
Check = namedtuple("Check", "name outcome detail")
Check.__doc__ = "One check made while verifying: outcome 'passed', 'failed' or 'not checked'."
_OUTCOMES = {0: "passed", 1: "failed", 2: "not checked"}


class Signature:
    """One signature of a document, its seal and its verdict."""

    __slots__ = ("index", "id", "type", "location", "usable", "problems", "provider",
                 "signature_method", "signature_date_time", "check_method", "reference_count",
                 "seal_location", "signed_value_location", "ses_version", "seal_name", "seal_id",
                 "valid_start", "valid_end", "signing_time", "picture_type", "picture_format",
                 "picture_size_mm", "stamps", "verdict", "verdict_reason", "signer", "checks")

    @property
    def page(self):
        """Page index of the first stamp; None without stamps."""
        return self.stamps[0].page if self.stamps else None

    @property
    def boundary(self):
        """Boundary of the first stamp in page millimetres; None without stamps."""
        return self.stamps[0].boundary if self.stamps else None

    def __repr__(self):
        return (f"<tarvik.Signature {self.id!r} seal {self.seal_name!r} page {self.page} "
                f"verdict {self.verdict}>")


def _signature(handle, index):
    raw = _sized(_Signature)
    _check(_lib.tarvik_signature_info(handle, index, ctypes.byref(raw)))
    s = Signature()
    s.index = index
    for name in ("id", "type", "location", "provider", "signature_method", "signature_date_time",
                 "check_method", "seal_location", "signed_value_location", "seal_name", "seal_id",
                 "valid_start", "valid_end", "signing_time", "picture_type", "picture_format",
                 "verdict_reason", "signer"):
        setattr(s, name, _text(getattr(raw, name)))
    s.usable = bool(raw.usable)
    s.reference_count = raw.reference_count
    s.ses_version = raw.ses_version
    s.picture_size_mm = (raw.picture_width_mm, raw.picture_height_mm)
    s.verdict = Verdict(raw.verdict) if raw.verdict in Verdict._value2member_map_ else Verdict.UNKNOWN
    text = ctypes.c_char_p()
    s.problems = []
    for i in range(raw.problem_count):
        _check(_lib.tarvik_signature_problem(handle, index, i, ctypes.byref(text)))
        s.problems.append(_text(text.value))
    s.stamps = []
    for i in range(raw.stamp_count):
        st = _sized(_Stamp)
        _check(_lib.tarvik_signature_stamp(handle, index, i, ctypes.byref(st)))
        clip = (st.clip_left, st.clip_top, st.clip_right, st.clip_bottom) if st.has_clip else None
        s.stamps.append(Stamp(_text(st.id), st.page_id, st.page,
                              (st.left, st.top, st.right, st.bottom), clip))
    s.checks = []
    for i in range(raw.check_count):
        c = _sized(_Check)
        _check(_lib.tarvik_signature_check(handle, index, i, ctypes.byref(c)))
        s.checks.append(Check(_text(c.name), _OUTCOMES.get(c.outcome, "not checked"), _text(c.detail)))
    return s


def _report(report):
    """Seal results and warnings of a render report; frees it."""
    if not report:
        return [], []
    try:
        count = ctypes.c_int()
        seals = []
        _check(_lib.tarvik_report_seal_count(report, ctypes.byref(count)))
        for i in range(count.value):
            r = _sized(_SealResult)
            _check(_lib.tarvik_report_seal(report, i, ctypes.byref(r)))
            seals.append(SealResult(r.signature, _text(r.stamp_id), bool(r.drawn), bool(r.crossed),
                                    _text(r.reason)))
        warnings = []
        text = ctypes.c_char_p()
        _check(_lib.tarvik_report_warning_count(report, ctypes.byref(count)))
        for i in range(count.value):
            _check(_lib.tarvik_report_warning(report, i, ctypes.byref(text)))
            warnings.append(_text(text.value))
        return seals, warnings
    finally:
        _lib.tarvik_report_free(report)

# ---------------------------------------------------------------- images


class _Owned:
    """Memory the library allocated, released with `free` when collected."""

    __slots__ = ("pointer", "free")

    def __init__(self, pointer, free):
        self.pointer, self.free = pointer, free

    def __del__(self):
        if self.pointer and _lib is not None:
            self.free(self.pointer)
            self.pointer = None


class Image:
    """An RGBA picture: bytes R, G, B, A per pixel, straight alpha, rows top
    to bottom, width x 4 bytes per row.

    bytes(img) copies the pixels; img.buffer is a memoryview of shape
    (height, width, 4) over them; numpy.asarray(img) views them without a
    copy (array interface; on Python 3.12 and later also the buffer
    protocol).
    """

    __slots__ = ("width", "height", "seals", "warnings", "kind", "_array", "_owner", "__weakref__")

    def __init__(self, width, height, array, owner):
        self.width = width
        self.height = height
        self._array = array  # a ctypes array of width x height x 4 bytes
        self._owner = owner  # what keeps the memory alive
        self.seals = []
        self.warnings = []
        self.kind = None

    @classmethod
    def _wrap(cls, address, width, height, owner):
        array = (ctypes.c_uint8 * (width * height * 4)).from_address(address)
        array.owner = owner  # views of the array keep the memory alive
        return cls(width, height, array, owner)

    @property
    def stride(self):
        return self.width * 4

    @property
    def size(self):
        return (self.width, self.height)

    @property
    def buffer(self):
        return memoryview(self._array).cast("B", (self.height, self.width, 4))

    def __buffer__(self, flags):
        return self.buffer

    @property
    def __array_interface__(self):
        return {"version": 3, "shape": (self.height, self.width, 4), "typestr": "|u1",
                "data": (ctypes.addressof(self._array), False)}

    def __bytes__(self):
        return bytes(self._array)

    def __len__(self):
        return len(self._array)

    def pixel(self, x, y):
        """(r, g, b, a) at column x, row y."""
        if not (0 <= x < self.width and 0 <= y < self.height):
            raise IndexError(f"({x}, {y}) is outside {self.width} x {self.height}")
        i = (y * self.width + x) * 4
        return tuple(self._array[i:i + 4])

    def to_png(self):
        """The picture as PNG file bytes (RGBA)."""
        out = _u8_p()
        size = ctypes.c_size_t()
        _check(_lib.tarvik_encode_png(self._array, self.width, self.height, 0, ctypes.byref(out),
                                      ctypes.byref(size)))
        return _take_bytes(out, size)

    def save(self, path):
        """Writes the picture as a PNG file."""
        png = self.to_png()
        with builtins.open(os.fspath(path), "wb") as f:
            f.write(png)

    def __repr__(self):
        return f"<tarvik.Image {self.width} x {self.height} RGBA>"


# ---------------------------------------------------------------- documents


def _color_mode(color):
    if isinstance(color, str):
        if color not in _COLORS:
            raise BadArgument(f"color must be one of {sorted(_COLORS)}, not {color!r}", 1)
        return _COLORS[color]
    return int(color)


def _render_options(dpi, seals, cross, cross_invalid, color, background):
    o = _sized(_RenderOptions)
    o.dpi = dpi
    o.background = background
    o.seals = bool(seals)
    o.cross = bool(cross)
    o.cross_invalid = bool(cross_invalid)
    o.color_mode = _color_mode(color)
    return o


class Document:
    """An open OFD document. Use tarvik.open(). Safe to use from several
    threads at once; close() waits for calls in progress."""

    def __init__(self, handle, name):
        self._handle = handle
        self._name = name
        self._busy = 0
        self._cond = threading.Condition()
        self._signatures = None

    # Keeps the handle alive for the duration of a call, even against close().
    def _enter(self):
        with self._cond:
            if self._handle is None:
                raise BadArgument("the document is closed", 1)
            self._busy += 1
            return self._handle

    def _leave(self):
        with self._cond:
            self._busy -= 1
            if self._busy == 0:
                self._cond.notify_all()

    def _call(self, fn, *args):
        handle = self._enter()
        try:
            _check(fn(handle, *args))
        finally:
            self._leave()

    def close(self):
        with self._cond:
            while self._busy:
                self._cond.wait()
            handle, self._handle = self._handle, None
        if handle is not None:
            _lib.tarvik_close(handle)

    def __del__(self):
        handle = getattr(self, "_handle", None)
        if handle is not None and _lib is not None:
            _lib.tarvik_close(handle)

    def __enter__(self):
        return self

    def __exit__(self, *exc):
        self.close()

    @property
    def name(self):
        return self._name

    @property
    def page_count(self):
        count = ctypes.c_int()
        self._call(_lib.tarvik_page_count, ctypes.byref(count))
        return count.value

    def __len__(self):
        return self.page_count

    def page_size(self, page):
        """(width_mm, height_mm) of page `page` (from 0)."""
        w, h = ctypes.c_double(), ctypes.c_double()
        self._call(_lib.tarvik_page_size, int(page), ctypes.byref(w), ctypes.byref(h))
        return (w.value, h.value)

    def pixel_size(self, page, dpi=150):
        """(width, height) in pixels of page `page` rendered at `dpi`."""
        w, h = ctypes.c_int(), ctypes.c_int()
        self._call(_lib.tarvik_pixel_size, int(page), float(dpi), ctypes.byref(w), ctypes.byref(h))
        return (w.value, h.value)

    def render(self, page, dpi=150, *, seals=True, cross=False, cross_invalid=True,
               color="as decoded", background=0xFFFFFFFF):
        """Page `page` (from 0) as an RGBA Image, its seals drawn above it.
        `color`: "as decoded", "grey" or "black" (seals); `background`:
        0xAARRGGBB. img.seals says what happened to each seal."""
        options = _render_options(dpi, seals, cross, cross_invalid, color, background)
        image = _c_image_p()
        report = _c_report_p()
        self._call(_lib.tarvik_render_image, int(page), ctypes.byref(options), ctypes.byref(image),
                   ctypes.byref(report))
        owner = _Owned(image.value, _lib.tarvik_image_free)
        pixels = _u8_p()
        w, h, stride = ctypes.c_int(), ctypes.c_int(), ctypes.c_int()
        _check(_lib.tarvik_image_pixels(image, ctypes.byref(pixels), ctypes.byref(w), ctypes.byref(h),
                                        ctypes.byref(stride)))
        if stride.value != w.value * 4:
            raise InternalError(f"rows of {stride.value} bytes for {w.value} pixels", 102)
        result = Image._wrap(ctypes.addressof(pixels.contents), w.value, h.value, owner)
        result.seals, result.warnings = _report(report.value)
        return result

    def render_png(self, page, dpi=150, **options):
        """Page `page` as PNG file bytes; options as for render()."""
        o = _render_options(dpi, options.pop("seals", True), options.pop("cross", False),
                            options.pop("cross_invalid", True), options.pop("color", "as decoded"),
                            options.pop("background", 0xFFFFFFFF))
        if options:
            raise TypeError(f"unexpected options: {', '.join(options)}")
        out = _u8_p()
        size = ctypes.c_size_t()
        self._call(_lib.tarvik_render_png, int(page), ctypes.byref(o), ctypes.byref(out),
                   ctypes.byref(size), None)
        return _take_bytes(out, size)

    @property
    def signatures(self):
        """The signatures: usable ones in list order, then unusable ones."""
        if self._signatures is None:
            handle = self._enter()
            try:
                count = ctypes.c_int()
                _check(_lib.tarvik_signature_count(handle, ctypes.byref(count)))
                self._signatures = tuple(_signature(handle, i) for i in range(count.value))
            finally:
                self._leave()
        return list(self._signatures)

    def __repr__(self):
        state = "closed" if self._handle is None else f"{self.page_count} pages"
        return f"<tarvik.Document {self._name!r} {state}>"


def open(path=None, *, data=None, verify=True, trust_anchors=None, document=0):
    """Opens an OFD document from a path or from bytes (`data`).
    `verify`: verify the signatures (verdicts in doc.signatures);
    `trust_anchors`: a PEM file or a directory of PEM files."""
    if (path is None) == (data is None):
        raise BadArgument("give either a path or data", 1)
    options = _sized(_OpenOptions)
    options.document_index = int(document)
    options.verify = bool(verify)
    options.trust_anchors = os.fsencode(trust_anchors) if trust_anchors is not None else None
    handle = _c_doc_p()
    if data is not None:
        data = bytes(data)
        _check(_lib.tarvik_open_memory(data, len(data), ctypes.byref(options), ctypes.byref(handle)))
        name = "<memory>"
    else:
        name = os.fspath(path)
        _check(_lib.tarvik_open(os.fsencode(name), ctypes.byref(options), ctypes.byref(handle)))
    return Document(handle.value, name)


def decode_seal(data, *, dpi=300, width=0, height=0, cross=False, color="as decoded"):
    """Decodes a seal picture, OFD seal package, seal file (.esl) or signed
    value into an RGBA Image; img.kind says which it was."""
    data = bytes(data)
    o = _sized(_SealOptions)
    o.dpi, o.width, o.height, o.cross = int(dpi), int(width), int(height), bool(cross)
    o.color_mode = _color_mode(color)
    out = _u8_p()
    w, h, kind = ctypes.c_int(), ctypes.c_int(), ctypes.c_int()
    _check(_lib.tarvik_decode_seal(data, len(data), ctypes.byref(o), ctypes.byref(out), ctypes.byref(w),
                                   ctypes.byref(h), ctypes.byref(kind)))
    image = Image._wrap(ctypes.addressof(out.contents), w.value, h.value,
                        _Owned(ctypes.cast(out, ctypes.c_void_p).value, _lib.tarvik_free))
    image.kind = SealKind(kind.value)
    return image
