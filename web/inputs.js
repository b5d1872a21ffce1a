// Cameras and video files of the page, as what the worker's `open` takes: {source, ...} and `stop()`.
import { readY4m } from './y4m.js';

/// Throws an Error that says what is wrong.
export async function openCamera(onEnd, postFrame) {
  if (!navigator.mediaDevices) throw new Error('Cameras need a page from https or localhost');
  const direct = 'MediaStreamTrackProcessor' in window;
  if (!direct) checkVideoFrames();
  const video = { width: { ideal: 1280 }, height: { ideal: 720 }, frameRate: { ideal: 30 } };
  const stream = await navigator.mediaDevices.getUserMedia({ video }).catch((error) => {
    throw new Error(cameraErrors[error.name] ?? `The camera does not start: ${error.message}`);
  });
  const [track] = stream.getVideoTracks();
  track.onended = onEnd;
  const stop = () => track.stop();
  if (direct) {
    const { readable } = new MediaStreamTrackProcessor({ track });
    return { source: { source: 'camera', readable }, transfer: [readable], stop };
  }
  const element = await playing({ srcObject: stream }).catch((error) => {
    stop();
    throw error;
  });
  const stopPosting = postFrames(element, postFrame);
  return { source: { source: 'posted' }, element, stop: () => (stopPosting(), stop()) };
}

const cameraErrors = {
  NotAllowedError: 'The camera was not allowed: allow it in the browser, or choose a file or the rendered clip',
  NotFoundError: 'There is no camera: choose a file or the rendered clip',
  NotReadableError: 'The camera does not start: another program may be using it',
};

/// Throws an Error that says what is wrong.
export async function openFile(file, postFrame) {
  if (/\.y4m$/i.test(file.name)) {
    await readY4m(file);
    return { source: { source: 'y4m', file }, stop() {} };
  }
  checkVideoFrames();
  const src = URL.createObjectURL(file);
  const element = await playing({ src, loop: true }).catch(() => {
    URL.revokeObjectURL(src);
    throw new Error(`${file.name} is no video that this browser plays`);
  });
  const stopPosting = postFrames(element, postFrame);
  const stop = () => {
    stopPosting();
    element.pause();
    URL.revokeObjectURL(src);
  };
  return { source: { source: 'posted' }, element, stop };
}

async function playing(source) {
  const element = Object.assign(document.createElement('video'), { muted: true, playsInline: true }, source);
  await element.play();
  if (!element.videoWidth) throw new Error('no picture');
  return element;
}

function checkVideoFrames() {
  if (HTMLVideoElement.prototype.requestVideoFrameCallback) return;
  throw new Error('This browser hands no frames of videos to pages (requestVideoFrameCallback)');
}

/// Posts every frame that the element shows. Returns what ends that.
function postFrames(element, postFrame) {
  let id;
  const post = () => {
    postFrame(new VideoFrame(element));
    id = element.requestVideoFrameCallback(post);
  };
  id = element.requestVideoFrameCallback(post);
  return () => element.cancelVideoFrameCallback(id);
}
