// SPDX-License-Identifier: Apache-2.0
import '../style.css';
import './calibration.css';
import { element } from '../dom';
import type { CalibrationData } from './data';
import { showCalibration } from './page';

const root = document.getElementById('app');
const text = document.getElementById('report-data')?.textContent ?? '';
if (root) {
  try {
    const data = JSON.parse(text) as CalibrationData;
    if (data.version !== 1) {
      throw new Error(`version ${data.version} of the page's data is not known here`);
    }
    showCalibration(root, data);
  } catch (error) {
    root.replaceChildren(element('p', { class: 'failure' }, `This calibration cannot be shown: ${String(error)}`));
    throw error;
  }
}
