// Where the worker's frames come from: readable streams of VideoFrames, each at its time. A time stamp that goes back
// begins the picture anew.
import { Painter, framesPerSecond } from './clip.js';
import { readY4m } from './y4m.js';

/// Calls `make(number)` for every frame when it is due; late ones are not caught up on.
function timedStream(rate, make) {
  let number = 0;
  let due = performance.now();
  let cancelled = false;
  const pull = async (controller) => {
    await new Promise((resolve) => setTimeout(resolve, due - performance.now()));
    due = Math.max(due + 1000 / rate, performance.now());
    const frame = await make(number++);
    if (cancelled) frame.close();
    else controller.enqueue(frame);
  };
  return new ReadableStream({ pull, cancel: () => (cancelled = true) }, { highWaterMark: 0 });
}

let painter, converter;

export function renderedClip(library) {
  const { width, height } = Painter.size;
  painter ??= new Painter();
  converter ??= library.makeConverter(width, height, 1);
  return timedStream(framesPerSecond, (number) => {
    converter.picture.set(painter.paint(number / framesPerSecond));
    const timestamp = (number * 1e6) / framesPerSecond;
    const frame = converter.convert(number);
    return new VideoFrame(frame, { format: 'I420', codedWidth: width, codedHeight: height, timestamp });
  });
}

/// The clip again and again.
export async function y4mClip(file) {
  const clip = await readY4m(file);
  return timedStream(clip.rate, (number) => clip.frame(number % clip.frames));
}

/// Frames that the page posts. `put` takes them over, and drops those that come while one waits.
export class Mailbox {
  #controller;
  stream = new ReadableStream({ start: (controller) => (this.#controller = controller) });

  put(frame) {
    if (this.#controller.desiredSize > 0) this.#controller.enqueue(frame);
    else frame.close();
  }
}
