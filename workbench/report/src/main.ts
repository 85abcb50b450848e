// SPDX-License-Identifier: Apache-2.0
import 'uplot/dist/uPlot.min.css';
import './style.css';
import { App } from './app';
import type { ReportData } from './data';
import { element } from './dom';

const root = document.getElementById('app');
const text = document.getElementById('report-data')?.textContent ?? '';
if (root) {
  try {
    const data = JSON.parse(text) as ReportData;
    if (data.version !== 1) {
      throw new Error(`version ${data.version} of the report's data is not known here`);
    }
    const app = new App(root, data);
    Object.defineProperty(window, 'veskarReport', { value: app.probe });
  } catch (error) {
    root.replaceChildren(element('p', { class: 'failure' }, `This report cannot be shown: ${String(error)}`));
    throw error;
  }
}
