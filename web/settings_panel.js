// The settings that the library lists, as controls: presets first, single settings after them.

export class SettingsPanel {
  #form;
  #options;
  #onChange;

  /// Calls `onChange()` after every valid change.
  constructor(form, { options, presets }, onChange) {
    this.#form = form;
    this.#onChange = onChange;
    this.#options = options.map((option) => addOption(form.querySelector('#options'), option));
    form.preset.append(...presets.map(({ name }) => new Option(name)));
    form.preset.addEventListener('change', () => this.#choose(presets));
    form.addEventListener('change', () => this.#check());
    form.addEventListener('submit', (event) => event.preventDefault());
    this.#choose(presets);
  }

  get values() {
    return this.#options.map((control) => Number(control.value));
  }

  get scale() {
    return Number(this.#form.scale.value);
  }

  /// null: no estimate.
  get quantiser() {
    return this.#form.quantiser.value === '' ? null : Number(this.#form.quantiser.value);
  }

  #choose(presets) {
    const { values } = presets[this.#form.preset.selectedIndex];
    this.#options.forEach((control, i) => (control.value = values[i]));
  }

  #check() {
    if (this.#form.reportValidity()) this.#onChange();
  }
}

function addOption(parent, { name, text, choices, low, high, also }) {
  const label = Object.assign(document.createElement('label'), {
    htmlFor: name,
    textContent: name.replaceAll('_', ' '),
  });
  const help = Object.assign(document.createElement('p'), { id: `${name}-text`, textContent: text });
  const few = Object.fromEntries([also, low, high].map((value) => [value, value]));
  const control = choices || high - low < 2 ? select(choices ?? few) : number(low, high, also);
  control.id = name;
  control.setAttribute('aria-describedby', help.id);
  parent.append(label, control, help);
  return control;
}

/// `choices`: texts by value.
function select(choices) {
  const control = document.createElement('select');
  control.append(...Object.entries(choices).map(([value, text]) => new Option(text, value)));
  return control;
}

function number(low, high, also) {
  const min = Math.min(low, also);
  return Object.assign(document.createElement('input'), { type: 'number', min, max: high, required: true });
}
