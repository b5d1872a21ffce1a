"""Pre- and post-processing of a video call's frames, in NumPy arrays.

A frame is one array of all its bytes, or a sequence of planes whose rows may lie anywhere: luma (height, width);
chroma as the format has it, (rows, bytes of a row); packed formats (height, 2 * width). Nothing is copied.

    with vidproc.Pre("I420", 1280, 720, output_width=640, output_height=360, preset="webcam") as pre:
        small = pre.process(frame)

What the library refuses raises vidproc.Error, a ValueError with its status.
"""

from ._vidproc import Error, Exposure, Post, Pre, Status, __version__, frame_bytes, level, planes

__all__ = ["Error", "Exposure", "Post", "Pre", "Status", "__version__", "frame_bytes", "level", "planes"]
