// Frames in, pictures and figures out: the page sends {type, ...}, and gets {type, content}.
import { Comparison } from './comparison.js';
import { loadLibrary } from './library.js';
import { Mailbox, renderedClip, y4mClip } from './sources.js';

let library, comparison, reader, mailbox, resume;
let ended = Promise.resolve(); // once the stream before has
let going = Promise.resolve(); // while not paused

const report = (type, content) => postMessage({ type, content });

const handlers = {
  async start({ canvases }) {
    if (!('VideoFrame' in self)) throw new Error('This browser lacks WebCodecs (VideoFrame), which the page needs');
    library = await loadLibrary();
    comparison = new Comparison(library, canvases, report);
    report('ready', library.listSettings());
  },

  settings({ settings }) {
    comparison.settings = settings;
  },

  /// Plays `readable` (a camera's frames), `file` (Y4M), frames that the page posts, or the rendered clip.
  async open({ source, readable, file }) {
    await reader?.cancel();
    await ended;
    mailbox = source === 'posted' ? new Mailbox() : null;
    const streams = {
      camera: () => readable,
      posted: () => mailbox.stream,
      y4m: () => y4mClip(file),
      clip: () => renderedClip(library),
    };
    reader = (await streams[source]()).getReader();
    comparison.restart();
    report('opened');
    ended = play(reader);
  },

  frame({ frame }) {
    if (mailbox) mailbox.put(frame);
    else frame.close();
  },

  pause({ paused }) {
    resume?.();
    if (paused) going = new Promise((resolve) => (resume = resolve));
  },

  save() {
    report('saved', comparison.save());
  },
};

async function play(frames) {
  try {
    for (;;) {
      await going;
      const { value: frame, done } = await frames.read();
      if (done) return;
      try {
        await comparison.show(frame);
      } finally {
        frame.close();
      }
    }
  } catch (error) {
    report('error', error.message);
    frames.cancel();
  }
}

// In their order, one after another; frames come in between.
let last = Promise.resolve();
onmessage = ({ data }) => {
  if (data.type === 'frame') handlers.frame(data);
  else last = last.then(() => handlers[data.type](data)).catch((error) => report('error', error.message));
};
