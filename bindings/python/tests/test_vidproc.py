"""The package: frames in every shape of arrays, settings, errors, threads."""

import ast
import pathlib
import threading

import numpy as np
import pytest
import vidproc

FORMATS = ["UYVY", "YUYV", "NV12", "I420", "I422"]
WIDTH, HEIGHT = 66, 40


def noise(format, width=WIDTH, height=HEIGHT, seed=1):
    count = vidproc.frame_bytes(format, width, height)
    return np.random.default_rng(seed).integers(60, 100, count, np.uint8)


def spread(plane, padding, upside_down):
    """A copy of a plane whose rows lie apart, the lowest first where they are upside down."""
    rows = np.full((plane.shape[0], plane.shape[1] + padding), 255, np.uint8)
    view = rows[::-1, : plane.shape[1]] if upside_down else rows[:, : plane.shape[1]]
    view[:] = plane
    return view


@pytest.mark.parametrize("output_format", FORMATS)
@pytest.mark.parametrize("format", FORMATS)
def test_frames_of_any_layout_give_the_same_bytes(format, output_format):
    frame = noise(format)
    planes = vidproc.planes(frame, format, WIDTH, HEIGHT)
    settings = {"output_format": output_format, "output_width": 33, "output_height": 21, "sharpening": 2}
    with vidproc.Pre(format, WIDTH, HEIGHT, preset="screen", **settings) as pre:
        expected = pre.process(frame)
        assert expected.shape == (vidproc.frame_bytes(output_format, 33, 21),)
        assert (pre.process(frame.tobytes()) == expected).all()
        for padding, upside_down in [(0, False), (7, False), (7, True)]:
            output = [
                spread(np.zeros_like(plane), padding, upside_down)
                for plane in vidproc.planes(expected, output_format, 33, 21)
            ]
            source = [spread(plane, padding, upside_down) for plane in planes]
            assert pre.process(source, output) is output
            for plane, wanted in zip(output, vidproc.planes(expected, output_format, 33, 21)):
                assert (plane == wanted).all()
                if padding:
                    assert (plane.base[:, plane.shape[1] :] == 255).all()


def test_nothing_is_copied():
    memory = noise("NV12")
    luma, chroma = vidproc.planes(memory, "NV12", WIDTH, HEIGHT)
    assert luma.shape == (HEIGHT, WIDTH) and chroma.shape == (HEIGHT // 2, WIDTH)
    assert np.shares_memory(luma, memory) and np.shares_memory(chroma, memory)
    with vidproc.Pre("NV12", WIDTH, HEIGHT, luma_offset=9) as pre:
        before = memory.copy()
        assert pre.process(memory, memory) is memory
        assert (luma.reshape(-1) == before[: luma.size] - 9).all()
        assert (chroma.reshape(-1) == before[luma.size :]).all()


def test_settings_change_between_frames_and_start_from_a_preset():
    with vidproc.Pre("I420", WIDTH, HEIGHT, preset="webcam", taps=8) as pre:
        assert pre.settings["denoise_auto"] == 100 and pre.settings["taps"] == 8
        assert not pre.passes_through
        for seed in range(12):
            pre.process(noise("I420", seed=seed))
        assert pre.noise > 5
        pre.reset()
        assert pre.noise == 0
        pre.configure(preset="none", filter="lanczos")
        assert pre.settings["denoise_auto"] == 0 and pre.settings["filter"] == "lanczos"
        assert pre.passes_through
        pre.configure(output_width=32)
        assert pre.process(noise("I420")).size == vidproc.frame_bytes("I420", 32, HEIGHT)
    with vidproc.Post("I420", WIDTH, HEIGHT, deblock_level=60) as post:
        assert (post.process(noise("I420")) != noise("I420")).any()


def test_types_and_documentation_name_what_the_library_lists():
    stub = ast.parse(pathlib.Path(vidproc.__file__).with_suffix(".pyi").read_text())
    fields = {
        node.name: [field.target.id for field in node.body if isinstance(field, ast.AnnAssign)]
        for node in stub.body
        if isinstance(node, ast.ClassDef)
    }
    others = {"preset", "output_format", "output_width", "output_height", "output_siting"}
    for kind, own in [(vidproc.Pre, "PreSettings"), (vidproc.Post, "PostSettings")]:
        with kind("I420", WIDTH, HEIGHT) as stream:
            assert set(fields["_Settings"] + fields[own]) == set(stream.settings) | others
            for name in stream.settings:
                assert f"\n{name}: " in kind.__doc__
    assert fields["Error"] == ["status"]


def process(frame, output=None):
    with vidproc.Pre("I420", WIDTH, HEIGHT) as pre:
        pre.process(frame, output)


good = noise("I420")
read_only = good.copy()
read_only.flags.writeable = False


@pytest.mark.parametrize(
    "call, error, text",
    [
        (lambda: vidproc.Pre("RGB", 8, 8), ValueError, "format is 'RGB', allowed: UYVY, "),
        (lambda: vidproc.Pre("I420", 8, 8, siting="top"), ValueError, "siting is 'top', allowed: left, centre"),
        (lambda: vidproc.Pre("I420", 8, 8, filter="sharp"), ValueError, "filter is 'sharp', allowed: automatic, "),
        (lambda: vidproc.Pre("I420", 8, 8, taps="8"), TypeError, "taps is a str, wanted an int"),
        (lambda: vidproc.Pre("I420", 8, 8, sharpening=2**40), TypeError, "sharpening is 1099511627776, wanted an int"),
        (lambda: vidproc.Pre("I420", 8, 8, output_width="8"), TypeError, "output_width is '8', wanted an int"),
        (lambda: vidproc.Pre("I420", 8, 8, sharpness=1), TypeError, "there is no keyword 'sharpness'"),
        (lambda: vidproc.Post("I420", 8, 8, denoise_auto=1), TypeError, "there is no keyword 'denoise_auto'"),
        (lambda: vidproc.planes(good[1:], "I420", WIDTH, HEIGHT), ValueError, "bytes one after another"),
        (lambda: vidproc.planes(np.zeros((8, 20), np.uint8)[:, :16], "UYVY", 8, 8), TypeError, "incompatible"),
        (lambda: process(good.astype(np.int16)), TypeError, "elements of format 'h'"),
        (lambda: process(7), TypeError, "frame is a int"),
        (lambda: process(good[1:]), ValueError, r"frame has shape \(3959,\), wanted 3960 bytes"),
        (lambda: process(np.zeros(2 * good.size, np.uint8)[::2]), ValueError, "bytes one after another"),
        (lambda: process([good]), ValueError, "frame has 1 planes, wanted 3"),
        (lambda: process([good] * 3), ValueError, r"plane 0, has shape \(3960,\), wanted \(40, 66\)"),
        (lambda: process(good, read_only), (ValueError, BufferError), "read-only"),
    ],
)
def test_mistakes_are_told_in_python(call, error, text):
    with pytest.raises(error, match=text):
        call()


@pytest.mark.parametrize(
    "call, status, text",
    [
        (lambda: vidproc.Pre("I420", 1, 8), "INVALID_ARGUMENT", "input.width is 1, allowed 2 to 16384"),
        (lambda: vidproc.Pre("I420", 8, 8, preset="film"), "INVALID_ARGUMENT", "there is no preset film"),
        (lambda: vidproc.Post("I420", 8, 8, deblock_level=3), "INVALID_ARGUMENT", "allowed 0 or 21 to 255"),
        (lambda: vidproc.Pre("I420", 8, 8, luma_gain=127, luma_offset=-9), "UNSUPPORTED", "allowed -3 to 255"),
        (lambda: vidproc.Exposure("I420", 8, 8), "INVALID_ARGUMENT", "allowed 16 to 16384"),
        (lambda: process(np.resize(good, 2 * good.size)[: good.size], None), None, ""),
        (lambda: process(memory[: good.size], memory[16 : good.size + 16]), "OVERLAP", "shares bytes"),
    ],
)
def test_refusals_carry_the_status(call, status, text):
    if status is None:
        return call()
    with pytest.raises(vidproc.Error, match=text) as refusal:
        call()
    assert refusal.value.status is vidproc.Status[status]
    assert isinstance(refusal.value, ValueError)


memory = np.zeros(good.size + 16, np.uint8)


def test_a_refused_change_leaves_the_settings():
    with vidproc.Pre("I420", WIDTH, HEIGHT, sharpening=3) as pre:
        expected = pre.process(good)
        with pytest.raises(vidproc.Error):
            pre.configure(sharpening=17)
        assert pre.settings["sharpening"] == 3
        assert (pre.process(good) == expected).all()


def test_a_closed_stream_is_told():
    with vidproc.Pre("I420", WIDTH, HEIGHT) as pre:
        pass
    with pytest.raises(RuntimeError, match="closed"):
        pre.process(good)


def test_exposure_settles_and_drifts():
    with vidproc.Exposure("I420", 64, 48) as exposure:
        frames = [np.full(vidproc.frame_bytes("I420", 64, 48), 90 if n < 50 else 150, np.uint8) for n in range(120)]
        events = [exposure.process(frame) for frame in frames]
    assert events.index("settled") < 50 <= events.index("drifted")


def test_other_threads_run_meanwhile():
    """Every thread has to get its result; one that held the interpreter while it waited would stop all."""
    frame = noise("I420", 1280, 720)
    shared = vidproc.Pre("I420", 1280, 720, denoise_edge=1)
    expected = shared.process(frame)
    results = []

    def run():
        for _ in range(5):
            results.append((shared.process(frame) == expected).all())

    threads = [threading.Thread(target=run) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join(60)
    assert results == [True] * 20
