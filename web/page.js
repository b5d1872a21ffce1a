// The page: chooses what is shown, moves the border, shows figures and errors. The worker does the rest.
import { openCamera, openFile } from './inputs.js';
import { SettingsPanel } from './settings_panel.js';

const element = (id) => document.getElementById(id);
const worker = new Worker('worker.js', { type: 'module' });
const post = (type, content, transfer = []) => worker.postMessage({ type, ...content }, transfer);
let panel;
let shown = { stop() {} };
let summaryDue = 0;

// --- What is shown ---

const postFrame = (frame) => post('frame', { frame }, [frame]);
const showError = (text) => (element('error').textContent = text);

/// Shows what `input` resolves to. After an error what was shown goes on.
async function show(input) {
  showError('');
  try {
    const opened = await input;
    shown.stop();
    shown = opened;
    setPaused(false);
    post('open', opened.source, opened.transfer);
    summarise();
  } catch (error) {
    showError(error.message);
  }
}

const showFile = (file) => file && show(openFile(file, postFrame));
const showCamera = () => show(openCamera(() => showError('The camera has gone'), postFrame));
const showClip = () => show({ source: { source: 'clip' }, stop() {} });

element('camera').onclick = showCamera;
element('clip').onclick = showClip;
element('file').onchange = ({ target }) => {
  showFile(target.files[0]);
  target.value = '';
};

const hasFile = ({ dataTransfer }) => dataTransfer.types.includes('Files');
document.ondragover = (event) => {
  event.preventDefault();
  element('stage').classList.toggle('dropping', hasFile(event));
};
document.ondragleave = () => element('stage').classList.remove('dropping');
document.ondrop = (event) => {
  event.preventDefault();
  element('stage').classList.remove('dropping');
  if (hasFile(event)) showFile(event.dataTransfer.files[0]);
  else showError('What was dropped is no file');
};

function setPaused(paused) {
  element('pause').setAttribute('aria-pressed', paused);
  post('pause', { paused });
  if (paused) shown.element?.pause();
  else shown.element?.play();
}
element('pause').onclick = ({ target }) => setPaused(target.getAttribute('aria-pressed') !== 'true');

element('save').onclick = () => post('save');
function saved({ number, file }) {
  const link = Object.assign(document.createElement('a'), { href: URL.createObjectURL(file) });
  link.download = `vidproc-${number}.y4m`;
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 1000);
}

// --- Before and after ---

element('split').oninput = ({ target }) => {
  element('stage').style.setProperty('--split', `${target.value}%`);
  target.setAttribute('aria-valuetext', `${Math.round(target.value)} per cent before`);
};

// --- Figures ---

const quietly = 3000; // milliseconds after a change until its figures are said

const rate = (bits) => `${((bits * 30) / 1e6).toFixed(2)} Mbit/s`;

function rows({ format, before, after, framesPerSecond, copying, processing, noise, bits }) {
  const share = ((copying + processing) * 30) / 10;
  return [
    ['Before', `${before}, ${format}`],
    ['After', `${after}, I420`],
    ['Frames a second', framesPerSecond.toFixed(1)],
    ['Processing', `${processing.toFixed(2)} ms a frame`],
    ['Copying', `${copying.toFixed(2)} ms a frame`],
    ['One core at 30 a second', `${share.toFixed(1)} %`],
    ['Noise', noise ? `${noise.toFixed(1)} luma levels` : 'not measured'],
    ...bitRows(bits),
  ];
}

function bitRows({ missing, codec, before, after }) {
  if (missing) return [['Bits', missing]];
  if (!before || !after) return [['Bits', 'not yet']];
  return [
    ['Bits without', `${rate(before)} of ${codec}`],
    ['Bits with', `${rate(after)} of ${codec}`],
    ['Saved', `${(100 * (1 - after / before)).toFixed(0)} %`],
  ];
}

function showFigures(figures) {
  const made = rows(figures);
  const parts = made.flatMap(([name, value]) => [
    ['dt', name],
    ['dd', value],
  ]);
  element('figures').replaceChildren(
    ...parts.map(([tag, textContent]) => Object.assign(document.createElement(tag), { textContent })),
  );
  element('save').disabled = false;
  if (summaryDue && performance.now() > summaryDue) {
    summaryDue = 0;
    element('summary').textContent = made
      .slice(3)
      .map((row) => row.join(': '))
      .join('; ');
  }
}

/// Every second would be too often for who listens: figures are said once after a change.
function summarise() {
  summaryDue = performance.now() + quietly;
}

// --- The worker ---

const receivers = {
  ready(settings) {
    panel = new SettingsPanel(element('settings'), settings, sendSettings);
    sendSettings();
    showClip();
  },
  shape: ({ width, height }) => (element('stage').style.aspectRatio = `${width} / ${height}`),
  opened() {
    element('figures').replaceChildren();
    element('save').disabled = true;
  },
  figures: showFigures,
  error: showError,
  saved,
};

function sendSettings() {
  showError('');
  const { values, scale, quantiser } = panel;
  post('settings', { settings: { values, scale, quantiser } });
  summarise();
}

worker.onmessage = ({ data: { type, content } }) => receivers[type](content);
worker.onerror = ({ message }) =>
  showError(`The page does not work here: ${message ?? 'modules in workers are missing'}`);

if (HTMLCanvasElement.prototype.transferControlToOffscreen) {
  const canvases = ['before', 'after'].map((id) => element(id).transferControlToOffscreen());
  post('start', { canvases }, canvases);
} else {
  showError('This browser lacks OffscreenCanvas, which the page needs');
}
