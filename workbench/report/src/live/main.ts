// SPDX-License-Identifier: Apache-2.0
import '../style.css';
import './live.css';
import { LiveApp } from './liveapp';

const root = document.getElementById('app');
if (root) {
  Object.defineProperty(window, 'veskarLive', { value: new LiveApp(root).probe });
}
